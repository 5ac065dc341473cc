#pragma once

#include <cstdint>

namespace rotika {

/// Milliseconds since an unspecified time before process start; monotonic. Any thread.
std::uint64_t tickCount();

/// Blocks the calling thread. Any thread but the owner's.
void sleepMs(std::uint32_t durationMs);

} // namespace rotika
