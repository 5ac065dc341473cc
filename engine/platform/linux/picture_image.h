#pragma once

#include "base/picture.h"

#include <cairo.h>

namespace rotika {

/// The pixels of `image`, a square of the size that it was loaded for. Never freed. Owner thread.
cairo_surface_t* imagePixels(const PictureImage& image);

} // namespace rotika
