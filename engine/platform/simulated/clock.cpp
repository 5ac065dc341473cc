#include "platform/clock.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

std::uint64_t tickCount() {
    constexpr std::uint64_t startTick = 1'000'000;
    return startTick + simulatedDesktop().clock.now();
}

void sleepMs(std::uint32_t durationMs) {
    simulatedDesktop().clock.sleepCallingWorker(durationMs);
}

} // namespace rotika
