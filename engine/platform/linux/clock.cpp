#include "platform/clock.h"

#include <chrono>
#include <thread>

namespace rotika {

std::uint64_t tickCount() {
    // CLOCK_MONOTONIC counts from boot, so a tick of 0, the initial value, is long past.
    const auto sinceBoot = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(sinceBoot).count());
}

void sleepMs(std::uint32_t durationMs) {
    std::this_thread::sleep_for(std::chrono::milliseconds(durationMs));
}

} // namespace rotika
