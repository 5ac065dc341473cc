#include "platform/clock.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

std::uint64_t tickCount() {
    const SimulatedDesktop& desktop = simulatedDesktop();
    return desktop.bootedBeforeMs + desktop.clock.now();
}

void sleepMs(std::uint32_t durationMs) {
    simulatedDesktop().clock.sleepCallingWorker(durationMs);
}

} // namespace rotika
