#pragma once

#include "platform/picture.h"

#include <cairo.h>

/// `image` scaled to whole pixels; made once for each size. Never freed. Owner thread.
cairo_surface_t* scaledImage(const PictureImage& image, int width, int height);
