#pragma once

#include <memory>

/// What the event loop needs beyond Qt on this system: on Linux the termination signals as an orderly quit,
/// and the engine's GLib sources served when Qt itself does not run on GLib. On Windows messages reach the
/// engine's windows under any loop, and the end of the session reaches the application through Qt; there it
/// keeps Qt's own hidden windows from being closed, which would end the program. Lives from before the first
/// dialog until after the engine's stop. First thread.
class EventLoopSupport {
public:
    EventLoopSupport();
    ~EventLoopSupport();
    EventLoopSupport(const EventLoopSupport&) = delete;
    EventLoopSupport& operator=(const EventLoopSupport&) = delete;

private:
    struct Parts;
    std::unique_ptr<Parts> parts;
};
