#include "shell/process/event_loop_support.h"

#include "shell/process/program_end.h"
#include "shell/process/windows/hidden_window.h"

#include <QEventLoop>
#include <QTimer>
#include <type_traits>

namespace {

/// Windows that Qt creates for its own use and not for a QWindow, for example for messages of its tray icon.
bool isInternalWindow(HWND window) {
    const std::wstring name = classNameOf(window);
    return name.starts_with(L"Qt") && name.find(L"QWindow") == std::wstring::npos;
}

LRESULT CALLBACK messageHook(int code, WPARAM isTaken, LPARAM parameter) noexcept {
    auto& message = *reinterpret_cast<MSG*>(parameter);
    if (code == HC_ACTION && message.message == WM_CLOSE && isInternalWindow(message.hwnd))
        message.message = WM_NULL;
    return CallNextHookEx(nullptr, code, isTaken, parameter);
}

ProgramEnd* currentEnd = nullptr;

/// The system may end the process as soon as all its windows have returned from this message.
LRESULT CALLBACK sessionProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == WM_ENDSESSION && wParam != 0) {
        currentEnd->performLastActs();
        currentEnd->begin();
        return 0;
    }
    return message == WM_CLOSE ? 0 : DefWindowProcW(window, message, wParam, lParam);
}

BOOL CALLBACK closeBox(HWND window, LPARAM) noexcept {
    if (classNameOf(window) == L"#32770" && IsWindowVisible(window) != 0)
        PostMessageW(window, WM_CLOSE, 0, 0);
    return TRUE;
}

} // namespace

/// Programs such as taskkill send WM_CLOSE to all windows, hidden ones too. Qt quits when its tray icon's
/// window receives it, and unsaved changes would be lost; the main window only hides. A hook, because it also
/// receives the messages that a native dialog's own loop fetches.
struct EventLoopSupport::Parts {
    using Hook = std::unique_ptr<std::remove_pointer_t<HHOOK>, decltype(&UnhookWindowsHookEx)>;
    Hook hook{SetWindowsHookExW(WH_GETMESSAGE, messageHook, nullptr, GetCurrentThreadId()),
              UnhookWindowsHookEx};
    using Window = std::unique_ptr<std::remove_pointer_t<HWND>, decltype(&DestroyWindow)>;
    // Qt's windows are told of the session's end too, but there is none while the program starts or has only
    // its tray icon.
    Window sessionWindow{createHiddenWindow(L"RotikaSession", sessionProcedure, L""), DestroyWindow};
};

EventLoopSupport::EventLoopSupport(ProgramEnd& programEnd) {
    currentEnd = &programEnd;
    parts = std::make_unique<Parts>();
}

EventLoopSupport::~EventLoopSupport() = default;

void exitOnTermination() {}

void dropHangingBus() {}

void endNativeLoops() {
    EndMenu();
    EnumThreadWindows(GetCurrentThreadId(), closeBox, 0);
}

bool waitForTray(int limitMs, const std::function<bool()>& mayWait) {
    const auto isFound = [] { return FindWindowW(L"Shell_TrayWnd", nullptr) != nullptr; };
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (isFound() || !mayWait())
            loop.quit();
    });
    poll.start(200);
    QTimer::singleShot(limitMs, &loop, &QEventLoop::quit);
    if (!isFound())
        loop.exec();
    return isFound();
}
