#pragma once

#include <cstdint>
#include <functional>
#include <future>

namespace rotika {

/// Runs `body` on a new detached thread. `body` must not throw and must own everything it uses. False when
/// the system refuses a thread: `body` is then discarded. Any thread.
[[nodiscard]] bool startDetachedThread(std::function<void()> body);

/// Blocks until `ended` is ready, at most `limitMs`; true if it is. Owner thread.
bool waitForEnd(const std::future<void>& ended, std::uint32_t limitMs);

} // namespace rotika
