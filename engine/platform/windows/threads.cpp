#include "platform/threads.h"

#include <chrono>
#include <exception>
#include <system_error>
#include <thread>
#include <utility>

void startDetachedThread(std::function<void()> body) {
    try {
        std::thread([run = std::move(body)]() noexcept { run(); }).detach();
    } catch (const std::system_error&) {
        std::terminate();
    }
}

bool waitForEnd(const std::future<void>& ended, std::uint32_t limitMs) {
    return ended.wait_for(std::chrono::milliseconds(limitMs)) == std::future_status::ready;
}
