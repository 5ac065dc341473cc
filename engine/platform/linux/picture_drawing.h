#pragma once

#include "base/picture.h"

#include <cairo.h>

#include <memory>

namespace rotika {

/// A region in whole pixels.
struct PixelRegionDeleter {
    void operator()(cairo_region_t* region) const noexcept { cairo_region_destroy(region); }
};
using PixelRegion = std::unique_ptr<cairo_region_t, PixelRegionDeleter>;

/// The pixels that may differ between two pictures of one size.
PixelRegion changedPixels(const Picture& before, const Picture& after);

/// Redraws `picture` inside `region` of a 32-bit surface with alpha; pixels outside are kept. Owner thread.
void drawPicture(cairo_surface_t* surface, const Picture& picture, const cairo_region_t* region);

/// Loads fonts and draws a first text, which takes tens of milliseconds once.
void warmUpDrawing();

} // namespace rotika
