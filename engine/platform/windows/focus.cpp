#include "platform/focus.h"

#include "platform/windows/windows_api.h"

namespace rotika {

WindowHandle foregroundWindow() {
    return windowHandle(GetForegroundWindow());
}

bool windowExists(WindowHandle window) {
    return IsWindow(nativeWindow(window)) != 0;
}

void bringToForeground(WindowHandle window) {
    // Only the thread that has the foreground may give it away, so we share its input for a moment.
    const HWND present = GetForegroundWindow();
    const DWORD presentThread = present == nullptr ? 0 : GetWindowThreadProcessId(present, nullptr);
    const DWORD ownThread = GetCurrentThreadId();
    const bool attached = presentThread != 0 && presentThread != ownThread &&
                          AttachThreadInput(ownThread, presentThread, TRUE) != 0;
    SetForegroundWindow(nativeWindow(window));
    if (attached) {
        AttachThreadInput(ownThread, presentThread, FALSE);
    }
}

} // namespace rotika
