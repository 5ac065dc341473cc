#pragma once

#include "base/picture.h"

#include "platform/windows/gdiplus_api.h"

namespace rotika {

/// Premultiplied pixels in memory: a GDI+ image of a file would keep it open and decode it at each drawing.
struct PictureImage {
    Gdiplus::GpBitmap* pixels;
};

} // namespace rotika
