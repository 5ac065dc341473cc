#include "shell/event_loop_support.h"

#include "shell/program_end.h"

#include <windows.h>

#include <QEventLoop>
#include <QTimer>
#include <array>
#include <string_view>
#include <type_traits>

namespace {

/// Windows that Qt creates for its own use and not for a QWindow, for example for messages of its tray icon.
bool isInternalWindow(HWND window) {
    std::array<wchar_t, 64> buffer{};
    const int length = GetClassNameW(window, buffer.data(), static_cast<int>(buffer.size()));
    const std::wstring_view name(buffer.data(), static_cast<std::size_t>(length));
    return name.starts_with(L"Qt") && name.find(L"QWindow") == std::wstring_view::npos;
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

/// Top-level, though never shown: only such a window receives the messages of a session's end. Qt's windows
/// do too, but there is none while the program starts or has only its tray icon.
HWND createSessionWindow() {
    WNDCLASSW description{};
    description.lpszClassName = L"RotikaSession";
    description.lpfnWndProc = sessionProcedure;
    description.hInstance = GetModuleHandleW(nullptr);
    RegisterClassW(&description);
    return CreateWindowExW(WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE, description.lpszClassName, L"", WS_POPUP, 0,
                           0, 0, 0, nullptr, nullptr, description.hInstance, nullptr);
}

BOOL CALLBACK closeBox(HWND window, LPARAM) noexcept {
    constexpr std::wstring_view boxClass = L"#32770";
    std::array<wchar_t, 16> name{};
    const int length = GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    if (std::wstring_view(name.data(), static_cast<std::size_t>(length)) == boxClass &&
        IsWindowVisible(window) != 0)
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
    Window sessionWindow{createSessionWindow(), DestroyWindow};
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

bool waitForTray(int limitMs) {
    const auto isFound = [] { return FindWindowW(L"Shell_TrayWnd", nullptr) != nullptr; };
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (isFound())
            loop.quit();
    });
    poll.start(200);
    QTimer::singleShot(limitMs, &loop, &QEventLoop::quit);
    if (!isFound())
        loop.exec();
    return isFound();
}
