#pragma once

#include "platform/input_guard_protocol.h"

#include <cstdint>

namespace rotika {

// Each injects one event of the record's key or button; shared by the program and its guard. Other records,
// and buttons above 4, are ignored. Any thread.

/// False when it did not arrive: the system refuses input while it shows a desktop of its own (the lock
/// screen, the prompt for administrator consent), and discards it while the program in front has more rights
/// than ours.
bool sendPress(const GuardRecord& thing);

/// False when it may not have arrived, for the same reasons, and must be retried.
bool sendRelease(const GuardRecord& thing);

/// A retry of sendRelease(). Sends nothing and returns true if the key or button is up by now.
bool sendReleaseAgain(const GuardRecord& thing);

/// Marks the injected keys: GetMessageExtraInfo() of their messages.
inline constexpr std::uintptr_t extraInfoOfOurKeys = 0x526F7432;

/// Between two retries.
inline constexpr std::uint32_t releaseRetryMs = 100;

} // namespace rotika
