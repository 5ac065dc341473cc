#pragma once

#include "platform/windows/windows_api.h"

namespace rotika {

inline constexpr UINT trayCallbackMessage = WM_APP + 1; // lParam: the mouse message
inline constexpr WORD trayShowCommand = 1001;
inline constexpr WORD trayQuitCommand = 1002;

/// Shows the icon's menu at the cursor; the choice arrives at `mainWindow` as WM_COMMAND. Owner thread.
void showTrayMenu(HWND mainWindow) noexcept;

} // namespace rotika
