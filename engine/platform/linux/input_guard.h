#pragma once

#include "platform/input_guard_protocol.h"

namespace rotika {

/// Starts the guard process, which releases keys and mice if this process dies or hangs. A guard that dies is
/// restarted and gets the current state. The program also works without it. Owner thread, once.
void startInputGuard();

/// Any thread; never blocks, ignores failures.
void notifyInputGuard(GuardedThing kind, bool down, std::uint32_t code);

} // namespace rotika
