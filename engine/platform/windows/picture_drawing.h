#pragma once

#include "base/picture.h"

#include "platform/windows/windows_api.h"

namespace rotika {

// Owner thread.

/// Call once, before the first picture or image.
void startDrawing();

/// Clears the bitmap selected into `surface` (32 bits per pixel) to full transparency and draws the picture,
/// premultiplied.
void drawPicture(HDC surface, const Picture& picture);

} // namespace rotika
