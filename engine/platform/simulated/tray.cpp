#include "platform/tray.h"

#include "base/text.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

void addTrayIcon(WindowHandle mainWindow, const std::u16string& tip) {
    SimulatedDesktop& desktop = simulatedDesktop();
    desktop.requireWindow(mainWindow, "tray icon without its window");
    desktop.trayTip = cutTo(tip, 127);
    desktop.note(JournalKind::tray, "tray icon");
}

void removeTrayIcon() {
    SimulatedDesktop& desktop = simulatedDesktop();
    desktop.requireOwner("tray icon removed by a worker");
    if (desktop.trayTip) {
        desktop.trayTip.reset();
        desktop.note(JournalKind::tray, "tray icon removed");
    }
}

void showTrayBalloon(const std::u16string& title, const std::u16string& text, BalloonIcon icon) {
    SimulatedDesktop& desktop = simulatedDesktop();
    desktop.requireOwner("balloon shown by a worker");
    if (!desktop.trayTip)
        return;
    desktop.note(JournalKind::tray, std::string(icon == BalloonIcon::warning ? "warning" : "info") + " [" +
                                        utf8FromUtf16(cutTo(title, 63)) + "] " +
                                        utf8FromUtf16(cutTo(text, 255)));
}

} // namespace rotika
