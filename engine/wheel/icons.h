#pragma once

#include "base/picture.h"
#include "model/wheel_records.h"

#include <cstdint>

namespace rotika {

// The fields' icons. Files may be slow or hang, so a thread of their own reads them as soon as wheels come
// into force, and painting never does. Owner thread.

/// Both sides of an icon on the wheel, in layer pixels.
inline constexpr std::int32_t iconSizePx = 42;

/// Begins to load the icons of the wheels in force that have not been asked for yet. Returns at once.
void loadNewIcons();

/// MsgIconLoaded: puts the icon into the cache. True if an open wheel has to be painted anew.
bool takeIcon(std::intptr_t payload);

/// The image of a field's icon, kept to the end of the process; null if it has none, loading failed, which is
/// not tried again, or it has not been read yet.
const PictureImage* iconFor(const WheelAction& action);

} // namespace rotika
