#pragma once

#include <atomic>
#include <memory>

namespace rotika {

/// Set to ask a worker to end. Each run has its own, so that a run which overran its stop stays stopped when
/// the next one starts.
using StopRequest = std::shared_ptr<std::atomic<bool>>;

} // namespace rotika
