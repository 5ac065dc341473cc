#include "workers/worker_thread.h"

#include "platform/threads.h"

#include <utility>

namespace rotika {

bool startWorker(std::future<void>& thread, StopRequest& stop,
                 std::function<void(const std::atomic<bool>& stop)> body) {
    stop = std::make_shared<std::atomic<bool>>(false);
    const auto ended = std::make_shared<std::promise<void>>();
    const bool hasStarted = startDetachedThread([run = std::move(body), stop, ended] {
        run(*stop);
        ended->set_value();
    });
    if (hasStarted)
        thread = ended->get_future();
    return hasStarted;
}

void stopWorker(std::future<void>& thread, const StopRequest& stop, std::uint32_t limitMs) {
    if (!thread.valid())
        return;
    *stop = true;
    waitForEnd(thread, limitMs);
    thread = {};
}

} // namespace rotika
