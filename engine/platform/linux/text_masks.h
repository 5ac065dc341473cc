#pragma once

#include "base/picture.h"

#include <cairo.h>

namespace rotika {

/// A text drawn once: its coverage and its position in its box.
struct TextMask {
    cairo_surface_t* coverage = nullptr; // A8, null for a text without ink
    int offsetX = 0;                     // from the top left of the text's box
    int offsetY = 0;
};

/// Cached: shaping a text takes a hundred times as long as painting its mask. Valid until the next call.
/// Owner thread.
const TextMask& textMaskFor(const TextInBox& text);

} // namespace rotika
