#pragma once

#include "platform/input_guard_protocol.h"

namespace rotika {

/// Starts the guard process beside the program, which lets go of keys and mice should this process die or
/// stand still. One that dies is started again and told what is held. Without it the program works all the
/// same. Owner thread, once.
void startInputGuard();

/// Any thread; never blocks and never fails visibly.
void tellInputGuard(GuardedThing kind, bool down, std::uint32_t code);

} // namespace rotika
