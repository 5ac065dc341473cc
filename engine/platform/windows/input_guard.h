#pragma once

#include "platform/input_guard_protocol.h"

namespace rotika {

/// Starts the guard program, and a new one whenever it has died. The program also works without it. Owner
/// thread, once.
void startInputGuard();

/// Sends one change to the guard and stores it for a successor. Never blocks, ignores failures. Any thread.
void notifyInputGuard(const GuardRecord& record);

} // namespace rotika
