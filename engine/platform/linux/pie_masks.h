#pragma once

#include "base/picture.h"

#include <cairo.h>

namespace rotika {

/// A pie's coverage, drawn once, and where its top left stands in the layer.
struct PieMask {
    cairo_surface_t* coverage = nullptr; // A8, null where nothing is covered
    int left = 0;
    int top = 0;
};

/// The coverage of a pie's area, or of its outline with a pen above 0. Computing it costs four times what
/// painting with it costs, and a wheel shows the same pies frame after frame. Valid until the next call.
/// Owner thread.
const PieMask& pieMaskFor(const PictureBox& box, float startAngle, float sweepAngle, float penWidth);

/// Adds the pie, or an arc of its ellipse, to the path of `context`; the pen is not squeezed with the
/// ellipse.
void addPiePath(cairo_t* context, const PictureBox& box, float startAngle, float sweepAngle);
void addArcPath(cairo_t* context, const PictureBox& box, float startAngle, float sweepAngle);

} // namespace rotika
