#include "platform/threads.h"

#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

namespace rotika {

bool startDetachedThread(std::function<void()> body) {
    try {
        std::thread([run = std::move(body)]() noexcept { run(); }).detach();
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

bool waitForEnd(const std::future<void>& ended, std::uint32_t limitMs) {
    return ended.wait_for(std::chrono::milliseconds(limitMs)) == std::future_status::ready;
}

} // namespace rotika
