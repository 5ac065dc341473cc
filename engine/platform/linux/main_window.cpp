#include "platform/main_window.h"

#include "platform/linux/connection.h"
#include "platform/linux/hot_key.h"
#include "platform/linux/messages.h"
#include "platform/linux/monitor_changes.h"
#include "platform/linux/session_lock.h"

namespace rotika {

// The main window only receives messages: it is never mapped, so the status page's handlers are not called.

WindowHandle createMainWindow(const MainWindowHandlers& handlers) {
    if (ownerDisplay() == nullptr)
        return nullptr;
    const Window window = XCreateSimpleWindow(ownerDisplay(), rootWindow(), 0, 0, 1, 1, 0, 0, 0);
    XStoreName(ownerDisplay(), window, "Rotika");
    registerWindow(handleOf(window), handlers.messageArrived);
    setHotKeyHandler(handlers.hotKeyPressed);
    if (handlers.monitorsChanged != nullptr)
        watchMonitors(handlers.monitorsChanged);
    if (handlers.sessionLockChanged != nullptr)
        watchSessionLock(handlers.sessionLockChanged);
    return handleOf(window);
}

void repaintMainWindow(WindowHandle) {}

} // namespace rotika
