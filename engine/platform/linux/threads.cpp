#include "platform/threads.h"

#include <thread>
#include <utility>

void startDetachedThread(std::function<void()> body) {
    std::thread(std::move(body)).detach();
}
