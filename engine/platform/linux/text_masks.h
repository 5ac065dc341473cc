#pragma once

#include "base/picture.h"

#include <cairo.h>

namespace rotika {

/// A text drawn once: its coverage, and where in its box it stands.
struct TextMask {
    cairo_surface_t* coverage = nullptr; // A8, null for a text without ink
    int offsetX = 0;                     // from the top left of the text's box
    int offsetY = 0;
};

/// Shaping a text costs a hundred times what painting its mask costs, and the wheel shows the same texts
/// frame after frame. Valid until the next call. Owner thread.
const TextMask& textMaskFor(const TextInBox& text);

} // namespace rotika
