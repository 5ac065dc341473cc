#pragma once

#include <cstdint>

namespace rotika {

/// Milliseconds since some moment before the start of the process; never runs back. Any thread.
std::uint64_t tickCount();

/// Blocks the calling thread. Any thread but the owner's.
void sleepMs(std::uint32_t durationMs);

} // namespace rotika
