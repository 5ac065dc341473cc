#pragma once

#include "base/stop_request.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <future>

namespace rotika {

/// Starts `body` on a new thread; `thread` is then valid until stopWorker, even if the body ends earlier.
/// False where the system refuses a thread: `thread` stays invalid, so that a later start tries again. Owner
/// thread.
[[nodiscard]] bool startWorker(std::future<void>& thread, StopRequest& stop,
                               std::function<void(const std::atomic<bool>& stop)> body);

/// Requests a stop and waits up to `limitMs` for the thread to end; after that the thread is abandoned. No
/// effect without a running worker. Owner thread.
void stopWorker(std::future<void>& thread, const StopRequest& stop, std::uint32_t limitMs);

} // namespace rotika
