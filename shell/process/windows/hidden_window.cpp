#include "shell/process/windows/hidden_window.h"

#include <array>

HWND createHiddenWindow(const wchar_t* className, WNDPROC procedure, const wchar_t* title) {
    WNDCLASSW description{};
    description.lpszClassName = className;
    description.lpfnWndProc = procedure;
    description.hInstance = GetModuleHandleW(nullptr);
    RegisterClassW(&description);
    return CreateWindowExW(WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE, className, title, WS_POPUP, 0, 0, 0, 0,
                           nullptr, nullptr, description.hInstance, nullptr);
}

std::wstring classNameOf(HWND window) {
    std::array<wchar_t, 257> name{}; // no class has a longer one
    const int length = GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    return {name.data(), static_cast<std::size_t>(length)};
}
