#include "platform/threads.h"

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
