#pragma once

#include "base/picture.h"

#include "platform/windows/gdiplus_api.h"

namespace rotika {

/// Premultiplied pixels in memory: an image that comes from a file keeps it open, and is decoded anew at each
/// drawing.
struct PictureImage {
    Gdiplus::GpBitmap* pixels;
};

} // namespace rotika
