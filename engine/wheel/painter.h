#pragma once

#include "base/picture.h"

namespace rotika {

/// The picture of the active wheel, virtual cursor and dwell ring included, from the current state. Owner
/// thread, like the functions below.
Picture buildWheelPicture();

/// Repaints the wheel's layer. Call only when something visible has changed.
void paintWheel();

/// The same, if the wheel is open.
void repaintOpenWheel();

} // namespace rotika
