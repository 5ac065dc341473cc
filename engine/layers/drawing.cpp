#include "layers/drawing.h"

namespace rotika {

PictureBox pictureBox(const Rect& rect) {
    return {static_cast<float>(rect.left), static_cast<float>(rect.top), static_cast<float>(rect.width()),
            static_cast<float>(rect.height())};
}

void addShadowedText(Picture& picture, const std::u16string& text, const PictureBox& box,
                     const ShadowedTextStyle& style) {
    const PictureBox shadowBox{box.x + style.shadowOffsetPx, box.y + style.shadowOffsetPx, box.width,
                               box.height};
    picture.commands.push_back(TextInBox{text, shadowBox, style.sizePx, true, style.shadowColor});
    picture.commands.push_back(TextInBox{text, box, style.sizePx, true, style.color});
}

} // namespace rotika
