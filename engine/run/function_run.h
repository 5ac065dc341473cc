#pragma once

#include "model/wheel_records.h"

#include <cstdint>

namespace rotika {

/// Plays a copy of `action` on a thread of its own, `initialDelay` ms from now; returns at once. There is no
/// queue and no cancel: two runs play side by side. Owner thread.
void runFunction(const WheelAction& action, std::uint32_t initialDelay);

/// Clicks at the real cursor, 60 ms from now, on a thread of its own; hides the grid first. `button` as in
/// injectMouseButton. Owner thread.
void startMouseClick(std::uint32_t button, std::int32_t count);

/// One press or release of the step's key; nothing if it is not valid. Any thread.
void injectStep(const ActionStep& step, bool down);

} // namespace rotika
