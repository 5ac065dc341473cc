#include "platform/threads.h"

#include <chrono>
#include <thread>
#include <utility>

void startDetachedThread(std::function<void()> body) {
    std::thread(std::move(body)).detach();
}

bool waitForEnd(const std::future<void>& ended, std::uint32_t limitMs) {
    return ended.wait_for(std::chrono::milliseconds(limitMs)) == std::future_status::ready;
}
