#pragma once

#include "base/window_handle.h"

#include <string>

namespace rotika {

// The engine's own tray icon, for a start without the shell. It exists on Windows only: elsewhere the engine
// never starts without the shell, whose tray icon serves, so these functions do nothing there.

enum class BalloonIcon { info, warning };

/// `tip` is cut to 127 code units. Owner thread.
void addTrayIcon(WindowHandle mainWindow, const std::u16string& tip);
void removeTrayIcon();

/// `title` is cut to 63 code units, `text` to 255. Lost when there is no tray icon. Owner thread.
void showTrayBalloon(const std::u16string& title, const std::u16string& text, BalloonIcon icon);

} // namespace rotika
