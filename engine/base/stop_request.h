#pragma once

#include <atomic>
#include <memory>

namespace rotika {

/// Set to request that a worker end. Each run has its own, so that starting the next run does not cancel the
/// stop of an abandoned one.
using StopRequest = std::shared_ptr<std::atomic<bool>>;

} // namespace rotika
