#pragma once

#include <cstdint>
#include <functional>
#include <future>

namespace rotika {

/// Runs `body` on a thread of its own that nobody waits for. `body` must not throw and must own all it
/// touches. False when the system refuses a thread: `body` is then dropped. Any thread.
[[nodiscard]] bool startDetachedThread(std::function<void()> body);

/// Blocks until a thread has made `ended` ready, `limitMs` at most; true if it has. Owner thread.
bool waitForEnd(const std::future<void>& ended, std::uint32_t limitMs);

} // namespace rotika
