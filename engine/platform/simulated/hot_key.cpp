#include "platform/hot_key.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

bool registerHotKey(WindowHandle mainWindow, int id, std::uint16_t virtualKey) {
    SimulatedDesktop& desktop = simulatedDesktop();
    if (!desktop.hasDisplay)
        return false;
    desktop.requireWindow(mainWindow, "hot key without its window");
    if (virtualKey == 0 || desktop.keysTakenByOthers.contains(virtualKey) || desktop.hotKeys.contains(id))
        return false;
    desktop.hotKeys[id] = {id, virtualKey};
    desktop.note(JournalKind::hotKey, "register key " + std::to_string(virtualKey));
    return true;
}

void unregisterHotKey(WindowHandle mainWindow, int id) {
    SimulatedDesktop& desktop = simulatedDesktop();
    if (!desktop.hasDisplay)
        return;
    desktop.requireWindow(mainWindow, "hot key unregistered without its window");
    if (desktop.hotKeys.erase(id) > 0)
        desktop.note(JournalKind::hotKey, "unregister");
}

} // namespace rotika
