#pragma once

#include "platform/input_guard_protocol.h"

#include <cstdint>

namespace rotika {

// One injected event each, of the key or button that the record names; shared by the program and its guard.
// Other records, and buttons above 4, are none. Any thread.

/// False when it did not arrive: the system refuses input while it shows a desktop of its own (the locked
/// screen, the question for an administrator's consent), and swallows it while the program in front has more
/// rights than ours.
bool sendPress(const GuardRecord& thing);

/// False when it may not have arrived, for the same reasons, and must be tried again.
bool sendRelease(const GuardRecord& thing);

/// The same for one that had to be tried again; nothing is sent, and all is well, if it is up by now.
bool sendReleaseAgain(const GuardRecord& thing);

/// Between two tries.
inline constexpr std::uint32_t releaseRetryMs = 100;

} // namespace rotika
