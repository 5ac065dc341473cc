#include "platform/timer.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

void startWindowTimer(WindowHandle window, std::uint32_t periodMs, void (*tick)() noexcept) {
    SimulatedDesktop& desktop = simulatedDesktop();
    PlatformWindow& owner = desktop.requireWindow(window, "timer of a destroyed window");
    desktop.timers[window] = {periodMs, desktop.clock.now() + periodMs, tick};
    desktop.note(JournalKind::timer, "timer of " + owner.name + " " + std::to_string(periodMs));
}

void stopWindowTimer(WindowHandle window) {
    SimulatedDesktop& desktop = simulatedDesktop();
    PlatformWindow& owner = desktop.requireWindow(window, "timer of a destroyed window stopped");
    if (desktop.timers.erase(window) > 0)
        desktop.note(JournalKind::timer, "timer of " + owner.name + " stopped");
}

} // namespace rotika
