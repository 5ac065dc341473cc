#pragma once

#include "base/picture.h"

#include <cairo.h>

namespace rotika {

/// A pie's coverage, drawn once, and its top left corner in the layer.
struct PieMask {
    cairo_surface_t* coverage = nullptr; // A8, null where nothing is covered
    int left = 0;
    int top = 0;
};

/// The coverage of a pie's area, or of its outline if the pen is above 0. Cached: computing it takes four
/// times as long as painting with it. Valid until the next call. Owner thread.
const PieMask& pieMaskFor(const PictureBox& box, float startAngle, float sweepAngle, float penWidth);

/// Adds the pie, or an arc of its ellipse, to the path of `context`; the pen is not scaled with the ellipse.
void addPiePath(cairo_t* context, const PictureBox& box, float startAngle, float sweepAngle);
void addArcPath(cairo_t* context, const PictureBox& box, float startAngle, float sweepAngle);

} // namespace rotika
