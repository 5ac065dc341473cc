#pragma once

#include "base/stop_request.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <future>

namespace rotika {

/// Starts `body` on a thread of its own; `thread` is then valid until stopWorker, even if the body ends
/// before. False where the system refuses a thread: `thread` stays invalid, so that a later start tries
/// again. Owner thread, like the next.
[[nodiscard]] bool startWorker(std::future<void>& thread, StopRequest& stop,
                               std::function<void(const std::atomic<bool>& stop)> body);

/// Asks the run to end and waits for that, `limitMs` at most; one that takes longer is left to itself.
/// Without a run nothing happens.
void stopWorker(std::future<void>& thread, const StopRequest& stop, std::uint32_t limitMs);

} // namespace rotika
