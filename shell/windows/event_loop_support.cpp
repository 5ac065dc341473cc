#include "shell/event_loop_support.h"

#include <windows.h>

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

} // namespace

/// Programs such as taskkill send WM_CLOSE to all windows, hidden ones too. Qt quits when its tray icon's
/// window receives it, and unsaved changes would be lost; the main window only hides. A hook, because it also
/// receives the messages that a native dialog's own loop fetches.
struct EventLoopSupport::Parts {
    using Hook = std::unique_ptr<std::remove_pointer_t<HHOOK>, decltype(&UnhookWindowsHookEx)>;
    Hook hook{SetWindowsHookExW(WH_GETMESSAGE, messageHook, nullptr, GetCurrentThreadId()),
              UnhookWindowsHookEx};
};

EventLoopSupport::EventLoopSupport() : parts(std::make_unique<Parts>()) {}
EventLoopSupport::~EventLoopSupport() = default;
