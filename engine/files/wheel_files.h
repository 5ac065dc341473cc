#pragma once

#include "core/wheel_records.h"

#include <string>
#include <vector>

/// Fills `wheels` (emptied first) with all that can be rescued from a wheel file; each loss that is noticed
/// appends one line to `problems`. True if nothing was reported, which says nothing about how many wheels
/// there are. Touches nothing but its arguments. Owner thread, since tokens are looked up on the keyboard
/// layout.
bool loadWheelFile(const std::u16string& path, std::vector<Wheel>& wheels, std::u16string& problems);
