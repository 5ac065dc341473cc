#pragma once

#include "base/picture.h"

#include "platform/windows/windows_api.h"

namespace rotika {

// Owner thread.

/// Before the first picture or image; once.
void startDrawing();

/// Clears the bitmap selected into `surface` (32 bits a pixel) to full transparency and draws the picture,
/// premultiplied.
void drawPicture(HDC surface, const Picture& picture);

} // namespace rotika
