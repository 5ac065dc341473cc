#include "platform/linux/pie_masks.h"

#include <cmath>
#include <map>
#include <numbers>
#include <tuple>

namespace rotika {

namespace {

constexpr std::size_t maxMasks = 256; // a wheel of 24 fields uses 48

using MaskKey = std::tuple<float, float, float, float, float, float, float>;
std::map<MaskKey, PieMask> masks;

double radians(float degrees) {
    return static_cast<double>(degrees) * std::numbers::pi / 180;
}

PieMask drawMask(const PictureBox& box, float startAngle, float sweepAngle, float penWidth) {
    const bool isOutline = penWidth > 0;
    cairo_surface_t* recording = cairo_recording_surface_create(CAIRO_CONTENT_ALPHA, nullptr);
    cairo_t* context = cairo_create(recording);
    addPiePath(context, box, startAngle, sweepAngle);
    cairo_set_line_width(context, penWidth);
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
    if (isOutline)
        cairo_stroke_extents(context, &left, &top, &right, &bottom);
    else
        cairo_fill_extents(context, &left, &top, &right, &bottom);
    PieMask mask{nullptr, static_cast<int>(std::floor(left)), static_cast<int>(std::floor(top))};
    const int width = static_cast<int>(std::ceil(right)) - mask.left;
    const int height = static_cast<int>(std::ceil(bottom)) - mask.top;
    cairo_destroy(context);
    cairo_surface_destroy(recording);
    if (width < 1 || height < 1)
        return mask;
    mask.coverage = cairo_image_surface_create(CAIRO_FORMAT_A8, width, height);
    context = cairo_create(mask.coverage);
    cairo_translate(context, -mask.left, -mask.top);
    addPiePath(context, box, startAngle, sweepAngle);
    cairo_set_line_width(context, penWidth);
    if (isOutline)
        cairo_stroke(context);
    else
        cairo_fill(context);
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

const PieMask& pieMaskFor(const PictureBox& box, float startAngle, float sweepAngle, float penWidth) {
    const MaskKey key{box.x, box.y, box.width, box.height, startAngle, sweepAngle, penWidth};
    if (const auto cached = masks.find(key); cached != masks.end())
        return cached->second;
    if (masks.size() >= maxMasks)
        clearMasks();
    return masks.emplace(key, drawMask(box, startAngle, sweepAngle, penWidth)).first->second;
}

void addArcPath(cairo_t* context, const PictureBox& box, float startAngle, float sweepAngle) {
    cairo_save(context);
    cairo_translate(context, box.x + box.width / 2, box.y + box.height / 2);
    cairo_scale(context, box.width / 2, box.height / 2);
    cairo_arc(context, 0, 0, 1, radians(startAngle), radians(startAngle + sweepAngle));
    cairo_restore(context);
}

void addPiePath(cairo_t* context, const PictureBox& box, float startAngle, float sweepAngle) {
    cairo_move_to(context, box.x + box.width / 2, box.y + box.height / 2);
    addArcPath(context, box, startAngle, sweepAngle);
    cairo_close_path(context);
}

} // namespace rotika
