#pragma once

#include "model/wheel_records.h"

#include <cstdint>
#include <string>
#include <vector>

namespace rotika {

/// Fills `wheels` (emptied first) with all that can be rescued from a wheel file; each loss that is noticed
/// appends one line to `problems`. True if nothing was reported, which says nothing about how many wheels
/// there are. Touches nothing but its arguments. Owner thread, since tokens are looked up on the keyboard
/// layout.
bool loadWheelFile(const std::u16string& path, std::vector<Wheel>& wheels, std::u16string& problems);

/// `value` of a step of that kind, other than an open step, that says nothing of it.
std::int32_t defaultStepValue(StepKind kind);

/// The nearest that such a step can have.
std::int32_t clampedStepValue(StepKind kind, std::int32_t value);

/// The nearest that a field can have between its steps.
std::int32_t clampedDelay(std::int32_t delayMs);

} // namespace rotika
