#pragma once

#include "base/window_handle.h"

#include <string>

namespace rotika {

// The engine's own tray icon, for a start without the shell. Windows only: elsewhere the engine never starts
// without the shell, which has its own tray icon, so these functions have no effect.

enum class BalloonIcon { info, warning };

/// `tip` is truncated to 127 code units. Owner thread.
void addTrayIcon(WindowHandle mainWindow, const std::u16string& tip);
void removeTrayIcon();

/// `title` is truncated to 63 code units, `text` to 255. No effect without a tray icon. Owner thread.
void showTrayBalloon(const std::u16string& title, const std::u16string& text, BalloonIcon icon);

} // namespace rotika
