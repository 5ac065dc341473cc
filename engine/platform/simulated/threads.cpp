#include "platform/threads.h"

#include "platform/simulated/simulated_desktop.h"

#include <chrono>

namespace rotika {

bool startDetachedThread(std::function<void()> body) {
    if (simulatedDesktop().refusesThreads)
        return false;
    simulatedDesktop().clock.startWorker(std::move(body));
    return true;
}

bool waitForEnd(const std::future<void>& ended, std::uint32_t limitMs) {
    const auto isReady = [&ended] {
        return ended.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    };
    simulatedDesktop().clock.runWorkersUntil(isReady, limitMs);
    return isReady();
}

} // namespace rotika
