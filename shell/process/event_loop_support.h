#pragma once

#include <functional>
#include <memory>

class ProgramEnd;

/// For the time before EventLoopSupport exists, when there is nothing to save or release: on Linux a
/// termination signal ends the process at once with status 0. Call as early as possible.
void exitOnTermination();

/// On Linux: if the session bus does not answer within two seconds, the process goes on as without one; the
/// programs that it starts do not. Qt would wait for it without a limit. Call before QApplication exists.
void dropHangingBus();

/// Additions to Qt's event loop. On Linux: termination signals end the program in the normal way, and the
/// engine's GLib sources are dispatched when Qt's event loop does not use GLib. On Windows: so does the end
/// of the session, and WM_CLOSE is not delivered to Qt's hidden windows, because closing them would end the
/// program. Create before the first dialog, destroy after the engine has stopped. Main thread.
class EventLoopSupport {
public:
    explicit EventLoopSupport(ProgramEnd& programEnd);
    ~EventLoopSupport();
    EventLoopSupport(const EventLoopSupport&) = delete;
    EventLoopSupport& operator=(const EventLoopSupport&) = delete;

private:
    struct Parts;
    std::unique_ptr<Parts> parts;
};

/// On Windows ends the loops of native menus and boxes, which no exit of Qt's ends. Main thread.
void endNativeLoops();

/// Waits until there is a tray to show an icon in, at most `limitMs` and while `mayWait`; events are
/// processed. Also ends when the program does. A tray that starts after the program's first look for one
/// might not be used by Qt, so call this before. Main thread.
bool waitForTray(int limitMs, const std::function<bool()>& mayWait);
