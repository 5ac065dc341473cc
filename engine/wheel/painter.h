#pragma once

#include "base/picture.h"

namespace rotika {

/// The picture of the active wheel, virtual cursor and dwell ring included, from the state in force. Owner
/// thread.
Picture buildWheelPicture();

/// Paints the wheel's layer anew. Called only when something visible has changed.
void paintWheel();

/// The same, if the wheel is open.
void repaintOpenWheel();

} // namespace rotika
