#pragma once

#include "platform/input_guard_protocol.h"

namespace rotika {

/// Starts the guard program that stands beside this one, and another whenever it has died. Without it nothing
/// is guarded and all else works.
/// Owner thread, once.
void startInputGuard();

/// Tells the guard of one change, and the one that may have to follow on it; at once and silently, also when
/// there is no guard. Any thread.
void tellInputGuard(const GuardRecord& record);

} // namespace rotika
