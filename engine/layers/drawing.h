#pragma once

#include "base/geometry.h"
#include "base/picture.h"

#include <string>

namespace rotika {

// Drawing helpers shared by the painters.

PictureBox pictureBox(const Rect& rect);

struct ShadowedTextStyle {
    float sizePx = 0;
    PictureColor color;
    PictureColor shadowColor;
    float shadowOffsetPx = 0; // to the right and downward
};

/// Bold text with its shadow beneath.
void addShadowedText(Picture& picture, const std::u16string& text, const PictureBox& box,
                     const ShadowedTextStyle& style);

} // namespace rotika
