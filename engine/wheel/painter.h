#pragma once

#include "core/wheel_records.h"
#include "platform/picture.h"

/// The picture of the active wheel, virtual cursor and dwell ring included, from the state in force. Owner
/// thread.
Picture buildWheelPicture();

/// Paints the wheel's layer anew. Called only when something visible has changed.
void paintWheel();

/// The image of a field's icon, loaded on first use and kept to the end; null if it has none or loading
/// failed.
const PictureImage* iconFor(const WheelAction& action);
