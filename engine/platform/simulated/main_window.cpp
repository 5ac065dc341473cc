#include "platform/main_window.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

WindowHandle createMainWindow(const MainWindowHandlers& handlers) {
    SimulatedDesktop& desktop = simulatedDesktop();
    desktop.requireOwner("main window created on a worker");
    if (!desktop.hasDisplay)
        return nullptr;
    if (desktop.mainHandlers)
        breakContract("a second main window");
    desktop.mainHandlers = handlers;
    PlatformWindow& window = desktop.addWindow("main", {0, 0, 560, 570});
    window.messageArrived = handlers.messageArrived;
    return &window;
}

void repaintMainWindow(WindowHandle mainWindow) {
    if (mainWindow == nullptr)
        breakContract("repaint without a main window");
}

} // namespace rotika
