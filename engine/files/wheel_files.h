#pragma once

#include "model/wheel_records.h"

#include <cstdint>
#include <string>
#include <vector>

namespace rotika {

/// Replaces `wheels` by all that is valid in a wheel file; each reported error appends one line to
/// `problems`. True if nothing was reported, whatever the number of wheels. Has no other side effects. Owner
/// thread, since tokens are looked up on the keyboard layout.
bool loadWheelFile(const std::u16string& path, std::vector<Wheel>& wheels, std::u16string& problems);

/// Default `value` of a step of that kind, other than an open step.
std::int32_t defaultStepValue(StepKind kind);

/// `value` clamped to the range of such a step.
std::int32_t clampedStepValue(StepKind kind, std::int32_t value);

/// `delayMs` clamped to the range of a field's delay.
std::int32_t clampedDelay(std::int32_t delayMs);

} // namespace rotika
