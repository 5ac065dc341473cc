#pragma once

#include "model/wheel_records.h"

#include <cstdint>

namespace rotika {

/// Plays a copy of `action` on its own thread after `initialDelay` ms; returns at once. Runs are neither
/// queued nor cancelled: two of them run in parallel. Owner thread.
void runFunction(const WheelAction& action, std::uint32_t initialDelay);

/// Clicks at the real cursor after 60 ms, on its own thread; hides the grid first. `button` as in
/// injectMouseButton. Owner thread.
void startMouseClick(std::uint32_t button, std::int32_t count);

/// One press or release of the step's key; nothing if it is not valid. Any thread.
void injectStep(const ActionStep& step, bool down);

} // namespace rotika
