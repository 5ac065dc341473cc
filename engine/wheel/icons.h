#pragma once

#include "base/picture.h"
#include "model/wheel_records.h"

#include <cstdint>

namespace rotika {

// The fields' icons. Files may be slow or hang, so a separate thread reads them as soon as wheels become
// active; painting never reads files. Owner thread.

/// Both sides of an icon on the wheel, in layer pixels.
inline constexpr std::int32_t iconSizePx = 42;

/// Starts loading those icons of the active wheels that have not been requested yet. Returns at once.
void loadNewIcons();

/// MsgIconLoaded: puts the icon into the cache. True if an open wheel needs a repaint.
bool takeIcon(std::intptr_t payload);

/// The image of a field's icon, kept until the process ends; null if the field has none, loading failed (not
/// retried) or it has not been read yet.
const PictureImage* iconFor(const WheelAction& action);

} // namespace rotika
