#pragma once

// The only header that includes <windows.h>.

#include "base/window_handle.h"

// clang-format off
#include <windows.h> // first: the others need it
#include <commdlg.h>
#include <objbase.h>
#include <shellapi.h>
// clang-format on

#include <string>

namespace rotika {

static_assert(sizeof(wchar_t) == sizeof(char16_t), "wide text is UTF-16 on Windows, so pointers may be cast");

inline const wchar_t* wideText(const std::u16string& text) {
    return reinterpret_cast<const wchar_t*>(text.c_str());
}

inline HWND nativeWindow(WindowHandle window) {
    return reinterpret_cast<HWND>(window);
}

inline WindowHandle windowHandle(HWND window) {
    return reinterpret_cast<WindowHandle>(window);
}

/// Messages registered by name start here: the end of the private ones.
inline constexpr UINT firstRegisteredMessage = 0xC000;

inline HINSTANCE moduleInstance() {
    return GetModuleHandleW(nullptr);
}

} // namespace rotika
