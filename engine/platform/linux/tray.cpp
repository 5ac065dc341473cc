#include "platform/tray.h"

namespace rotika {

// Without the shell the engine does not start here, and the shell has the tray icon.
void addTrayIcon(WindowHandle, const std::u16string&) {}
void removeTrayIcon() {}
void showTrayBalloon(const std::u16string&, const std::u16string&, BalloonIcon) {}

} // namespace rotika
