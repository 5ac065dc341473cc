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
    // Only the foreground thread may change the foreground, so attach to its input state temporarily.
    const HWND present = GetForegroundWindow();
    const DWORD presentThread = present == nullptr ? 0 : GetWindowThreadProcessId(present, nullptr);
    const DWORD ownThread = GetCurrentThreadId();
    const bool attached = presentThread != 0 && presentThread != ownThread &&
                          AttachThreadInput(ownThread, presentThread, TRUE) != 0;
    SetForegroundWindow(nativeWindow(window));
    if (attached) {
        AttachThreadInput(ownThread, presentThread, FALSE);
    }
    // Under Wine the detached thread takes its active window out of the foreground, and all keys get lost.
    if (GetForegroundWindow() != nativeWindow(window)) {
        SetForegroundWindow(nativeWindow(window));
    }
}

} // namespace rotika
