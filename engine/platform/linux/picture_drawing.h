#pragma once

#include "base/picture.h"

#include <cairo.h>

#include <memory>

namespace rotika {

/// A region in whole pixels, given back by its owner.
struct PixelRegionDeleter {
    void operator()(cairo_region_t* region) const noexcept { cairo_region_destroy(region); }
};
using PixelRegion = std::unique_ptr<cairo_region_t, PixelRegionDeleter>;

/// The pixels that may differ between two pictures of one size.
PixelRegion changedPixels(const Picture& before, const Picture& after);

/// Draws `picture` anew inside `region` of a 32-bit surface with alpha; pixels outside stay. Owner thread.
void drawPicture(cairo_surface_t* surface, const Picture& picture, const cairo_region_t* region);

/// Loads fonts and draws a first text, which costs tens of milliseconds once.
void warmUpDrawing();

} // namespace rotika
