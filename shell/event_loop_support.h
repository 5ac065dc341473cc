#pragma once

#include <memory>

/// Additions to Qt's event loop. On Linux: termination signals quit the application in the normal way, and
/// the engine's GLib sources are dispatched when Qt's event loop does not use GLib. On Windows: WM_CLOSE is
/// not delivered to Qt's hidden windows, because closing them would end the program. Create before the first
/// dialog, destroy after the engine has stopped. Main thread.
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
