#include "platform/linux/text_masks.h"

#include "base/text.h"

#include "platform/linux/glib_handles.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>
#include <utility>

namespace rotika {

namespace {

// The first installed family is used; Pango takes missing letters from another.
constexpr char fontFamilies[] = "Segoe UI,Selawik,Noto Sans,DejaVu Sans,sans-serif";

constexpr std::size_t maxShapedLength = 512; // far more than any box can show
constexpr std::size_t maxMasks = 1024;       // two pages of 24 fields use under 100

using MaskKey = std::tuple<std::u16string, float, bool, float, float>;
std::map<MaskKey, TextMask> masks;

PangoContext* textContext() {
    static PangoContext* const context = [] {
        PangoContext* made = pango_font_map_create_context(pango_cairo_font_map_get_default());
        cairo_font_options_t* options = cairo_font_options_create();
        cairo_font_options_set_antialias(options,
                                         CAIRO_ANTIALIAS_GRAY); // subpixel edges need an opaque background
        cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_SLIGHT);
        pango_cairo_context_set_font_options(made, options);
        cairo_font_options_destroy(options);
        return made;
    }();
    return context;
}

GObjectPointer<PangoLayout> layOut(const TextInBox& text) {
    GObjectPointer<PangoLayout> layout(pango_layout_new(textContext()));
    PangoFontDescription* font = pango_font_description_from_string(fontFamilies);
    pango_font_description_set_absolute_size(font, std::round(text.sizePx * PANGO_SCALE));
    pango_font_description_set_weight(font, text.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    pango_layout_set_font_description(layout.get(), font);
    pango_font_description_free(font);
    const std::string utf8 = utf8FromUtf16(cutTo(text.text, maxShapedLength));
    pango_layout_set_text(layout.get(), utf8.c_str(), static_cast<int>(utf8.size()));
    pango_layout_set_width(layout.get(), static_cast<int>(text.box.width) * PANGO_SCALE);
    pango_layout_set_height(layout.get(), static_cast<int>(text.box.height) * PANGO_SCALE);
    pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
    pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
    pango_layout_set_alignment(layout.get(), PANGO_ALIGN_CENTER);
    return layout;
}

TextMask drawMask(const TextInBox& text) {
    const GObjectPointer<PangoLayout> layout = layOut(text);
    PangoRectangle ink;
    PangoRectangle logical;
    pango_layout_get_pixel_extents(layout.get(), &ink, &logical);
    const int boxWidth = static_cast<int>(text.box.width);
    const int boxHeight = static_cast<int>(text.box.height);
    const int shiftY = (boxHeight - logical.height) / 2 - logical.y;
    const int left = std::max(ink.x, 0);
    const int top = std::max(ink.y + shiftY, 0);
    const int right = std::min(ink.x + ink.width, boxWidth);
    const int bottom = std::min(ink.y + shiftY + ink.height, boxHeight);
    if (right <= left || bottom <= top)
        return {};
    TextMask mask{cairo_image_surface_create(CAIRO_FORMAT_A8, right - left, bottom - top), left, top};
    cairo_t* context = cairo_create(mask.coverage);
    cairo_move_to(context, -left, shiftY - top);
    pango_cairo_show_layout(context, layout.get());
    cairo_destroy(context);
    return mask;
}

void clearMasks() {
    for (auto& [key, mask] : masks)
        if (mask.coverage != nullptr)
            cairo_surface_destroy(mask.coverage);
    masks.clear();
}

} // namespace

const TextMask& textMaskFor(const TextInBox& text) {
    MaskKey key{text.text, text.sizePx, text.bold, text.box.width, text.box.height};
    if (const auto cached = masks.find(key); cached != masks.end())
        return cached->second;
    if (masks.size() >= maxMasks)
        clearMasks();
    return masks.emplace(std::move(key), drawMask(text)).first->second;
}

} // namespace rotika
