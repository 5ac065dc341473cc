#include "platform/focus.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

WindowHandle foregroundWindow() {
    simulatedDesktop().requireOwner("foreground window queried on a worker");
    return simulatedDesktop().foreground;
}

bool windowExists(WindowHandle window) {
    simulatedDesktop().requireOwner("window queried on a worker");
    return window != nullptr && window->exists;
}

void bringToForeground(WindowHandle window) {
    SimulatedDesktop& desktop = simulatedDesktop();
    if (!desktop.hasDisplay)
        return;
    PlatformWindow& target = desktop.requireWindow(window, "a destroyed window brought to the foreground");
    desktop.foreground = &target;
    desktop.note(JournalKind::focus, "focus " + target.name);
}

} // namespace rotika
