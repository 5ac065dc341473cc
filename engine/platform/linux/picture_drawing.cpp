#include "platform/linux/picture_drawing.h"

#include "platform/linux/picture_image.h"
#include "platform/linux/pie_masks.h"
#include "platform/linux/text_masks.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace rotika {

namespace {

struct Bounds {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
};

Bounds grown(const PictureBox& box, double margin) {
    return {box.x - margin, box.y - margin, box.x + box.width + margin, box.y + box.height + margin};
}

/// The bounds of a sector: of its centre, its two corners, and the ellipse's extremes inside the sweep.
Bounds sectorBounds(const PictureBox& box, float startAngle, float sweepAngle, double margin) {
    const double centreX = box.x + box.width / 2;
    const double centreY = box.y + box.height / 2;
    Bounds bounds{centreX, centreY, centreX, centreY};
    const auto include = [&](double degrees) {
        const double angle = degrees * std::numbers::pi / 180;
        const double x = centreX + std::cos(angle) * box.width / 2;
        const double y = centreY + std::sin(angle) * box.height / 2;
        bounds = {std::min(bounds.left, x), std::min(bounds.top, y), std::max(bounds.right, x),
                  std::max(bounds.bottom, y)};
    };
    const double start = startAngle;
    const double end = start + sweepAngle;
    include(start);
    include(end);
    for (double extreme = std::ceil(start / 90) * 90; extreme <= end; extreme += 90)
        include(extreme);
    return {bounds.left - margin, bounds.top - margin, bounds.right + margin, bounds.bottom + margin};
}

Bounds boundsOf(const FilledPie& pie) {
    return sectorBounds(pie.box, pie.startAngle, pie.sweepAngle, 0);
}
// The mitre at a narrow pie's tip extends far beyond the pen's width.
Bounds boundsOf(const OutlinedPie& pie) {
    return sectorBounds(pie.box, pie.startAngle, pie.sweepAngle, pie.penWidth * 10);
}
Bounds boundsOf(const OutlinedArc& arc) {
    return grown(arc.box, arc.penWidth);
}
Bounds boundsOf(const CutOutEllipse& ellipse) {
    return grown(ellipse.box, 0);
}
Bounds boundsOf(const OutlinedEllipse& ellipse) {
    return grown(ellipse.box, ellipse.penWidth);
}
Bounds boundsOf(const FilledRectangle& rectangle) {
    return grown(rectangle.box, 0);
}
Bounds boundsOf(const OutlinedRectangle& rectangle) {
    return grown(rectangle.box, rectangle.penWidth);
}
Bounds boundsOf(const TextInBox& text) {
    return grown(text.box, 1);
}
Bounds boundsOf(const ImageInBox& image) {
    return grown(image.box, 1);
}
Bounds boundsOf(const Polygon& polygon) {
    Bounds bounds{polygon.points[0].x, polygon.points[0].y, polygon.points[0].x, polygon.points[0].y};
    for (std::size_t i = 1; i < polygon.count; ++i) {
        const PicturePoint point = polygon.points[i];
        bounds = {std::min<double>(bounds.left, point.x), std::min<double>(bounds.top, point.y),
                  std::max<double>(bounds.right, point.x), std::max<double>(bounds.bottom, point.y)};
    }
    const double margin = polygon.penWidth * 10.0;
    return {bounds.left - margin, bounds.top - margin, bounds.right + margin, bounds.bottom + margin};
}

cairo_rectangle_int_t pixelsOf(const Bounds& bounds) {
    const int left = static_cast<int>(std::floor(bounds.left)) - 1;
    const int top = static_cast<int>(std::floor(bounds.top)) - 1;
    const int right = static_cast<int>(std::ceil(bounds.right)) + 1;
    const int bottom = static_cast<int>(std::ceil(bounds.bottom)) + 1;
    return {left, top, right - left, bottom - top};
}

cairo_rectangle_int_t pixelsOf(const DrawCommand& command) {
    return std::visit([](const auto& drawn) { return pixelsOf(boundsOf(drawn)); }, command);
}

void setColor(cairo_t* context, const PictureColor& color) {
    cairo_set_source_rgba(context, color.red / 255.0, color.green / 255.0, color.blue / 255.0,
                          color.alpha / 255.0);
}

void stroke(cairo_t* context, const PictureColor& color, float penWidth) {
    setColor(context, color);
    cairo_set_line_width(context, penWidth);
    cairo_stroke(context);
}

void drawPie(cairo_t* context, const PieMask& mask, const PictureColor& color) {
    if (mask.coverage == nullptr)
        return;
    setColor(context, color);
    cairo_mask_surface(context, mask.coverage, mask.left, mask.top);
}

void draw(cairo_t* context, const FilledPie& pie) {
    drawPie(context, pieMaskFor(pie.box, pie.startAngle, pie.sweepAngle, 0), pie.color);
}

void draw(cairo_t* context, const OutlinedPie& pie) {
    drawPie(context, pieMaskFor(pie.box, pie.startAngle, pie.sweepAngle, pie.penWidth), pie.color);
}

void draw(cairo_t* context, const OutlinedArc& arc) {
    cairo_new_sub_path(context);
    addArcPath(context, arc.box, arc.startAngle, arc.sweepAngle);
    stroke(context, arc.color, arc.penWidth);
}

void draw(cairo_t* context, const CutOutEllipse& ellipse) {
    cairo_new_sub_path(context);
    addArcPath(context, ellipse.box, 0, 360);
    cairo_set_operator(context, CAIRO_OPERATOR_CLEAR);
    cairo_fill(context);
    cairo_set_operator(context, CAIRO_OPERATOR_OVER);
}

void draw(cairo_t* context, const OutlinedEllipse& ellipse) {
    cairo_new_sub_path(context);
    addArcPath(context, ellipse.box, 0, 360);
    stroke(context, ellipse.color, ellipse.penWidth);
}

void draw(cairo_t* context, const FilledRectangle& rectangle) {
    const PictureBox& box = rectangle.box;
    cairo_rectangle(context, box.x, box.y, box.width, box.height);
    setColor(context, rectangle.color);
    cairo_fill(context);
}

void draw(cairo_t* context, const OutlinedRectangle& rectangle) {
    const PictureBox& box = rectangle.box;
    cairo_rectangle(context, box.x, box.y, box.width, box.height);
    stroke(context, rectangle.color, rectangle.penWidth);
}

void draw(cairo_t* context, const Polygon& polygon) {
    for (std::size_t i = 0; i < polygon.count; ++i)
        cairo_line_to(context, polygon.points[i].x, polygon.points[i].y);
    cairo_close_path(context);
    if (polygon.penWidth > 0) {
        stroke(context, polygon.color, polygon.penWidth);
        return;
    }
    setColor(context, polygon.color);
    cairo_set_fill_rule(context, CAIRO_FILL_RULE_EVEN_ODD);
    cairo_fill(context);
    cairo_set_fill_rule(context, CAIRO_FILL_RULE_WINDING);
}

void draw(cairo_t* context, const TextInBox& text) {
    const TextMask& mask = textMaskFor(text);
    if (mask.coverage == nullptr)
        return;
    setColor(context, text.color);
    // On whole pixels, so that the letters stay sharp.
    cairo_mask_surface(context, mask.coverage, std::floor(text.box.x + 0.5) + mask.offsetX,
                       std::floor(text.box.y + 0.5) + mask.offsetY);
}

void draw(cairo_t* context, const ImageInBox& image) {
    if (image.image == nullptr || image.box.width < 1 || image.box.height < 1)
        return;
    cairo_surface_t* pixels = imagePixels(*image.image);
    cairo_save(context);
    cairo_translate(context, std::floor(image.box.x + 0.5F), std::floor(image.box.y + 0.5F));
    const double width = std::round(image.box.width);
    const double height = std::round(image.box.height);
    cairo_scale(context, width / cairo_image_surface_get_width(pixels),
                height / cairo_image_surface_get_height(pixels));
    cairo_set_source_surface(context, pixels, 0, 0);
    cairo_paint_with_alpha(context, image.opacity);
    cairo_restore(context);
}

void addToPath(cairo_t* context, const cairo_region_t* region) {
    for (int i = 0; i < cairo_region_num_rectangles(region); ++i) {
        cairo_rectangle_int_t part;
        cairo_region_get_rectangle(region, i, &part);
        cairo_rectangle(context, part.x, part.y, part.width, part.height);
    }
}

void clipTo(cairo_t* context, const cairo_region_t* region) {
    addToPath(context, region);
    cairo_clip(context);
}

bool isOnWholePixels(const PictureBox& box) {
    const auto isWhole = [](float value) { return std::floor(value) == value; };
    return isWhole(box.x) && isWhole(box.y) && isWhole(box.width) && isWhole(box.height);
}

/// The part of a region that still shows the previous picture. It is cleared only where something with soft
/// edges will be drawn: writing all pixels of a large screen twice takes more time than all the rest.
class StaleRegion {
public:
    StaleRegion(cairo_t* target, const cairo_region_t* region)
        : context(target), stale(cairo_region_copy(region)) {}

    void clear(const cairo_rectangle_int_t& pixels) {
        if (cairo_region_is_empty(stale.get()))
            return;
        const PixelRegion part(cairo_region_create_rectangle(&pixels));
        cairo_region_intersect(part.get(), stale.get());
        fillWith(part.get(), CAIRO_OPERATOR_CLEAR);
        cairo_region_subtract_rectangle(stale.get(), &pixels);
    }

    void clearAll() {
        fillWith(stale.get(), CAIRO_OPERATOR_CLEAR);
        stale.reset(cairo_region_create());
    }

    /// Rectangles on whole pixels only.
    void fill(const FilledRectangle& rectangle) {
        const PictureBox& box = rectangle.box;
        const cairo_rectangle_int_t pixels{static_cast<int>(box.x), static_cast<int>(box.y),
                                           static_cast<int>(box.width), static_cast<int>(box.height)};
        const PixelRegion fresh(cairo_region_create_rectangle(&pixels));
        const PixelRegion drawn(cairo_region_copy(fresh.get()));
        cairo_region_intersect(fresh.get(), stale.get());
        cairo_region_subtract(drawn.get(), stale.get());
        cairo_region_subtract_rectangle(stale.get(), &pixels);
        setColor(context, rectangle.color);
        addToPath(context, drawn.get());
        cairo_fill(context);
        fillWith(fresh.get(), CAIRO_OPERATOR_SOURCE);
    }

private:
    void fillWith(const cairo_region_t* region, cairo_operator_t drawing) {
        if (cairo_region_is_empty(region))
            return;
        cairo_set_operator(context, drawing);
        addToPath(context, region);
        cairo_fill(context);
        cairo_set_operator(context, CAIRO_OPERATOR_OVER);
    }

    cairo_t* context;
    PixelRegion stale;
};

} // namespace

PixelRegion changedPixels(const Picture& before, const Picture& after) {
    PixelRegion changed(cairo_region_create());
    const auto include = [&](const DrawCommand& command) {
        const cairo_rectangle_int_t pixels = pixelsOf(command);
        cairo_region_union_rectangle(changed.get(), &pixels);
    };
    const std::size_t common = std::min(before.commands.size(), after.commands.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (before.commands[i] == after.commands[i])
            continue;
        include(before.commands[i]);
        include(after.commands[i]);
    }
    for (std::size_t i = common; i < before.commands.size(); ++i)
        include(before.commands[i]);
    for (std::size_t i = common; i < after.commands.size(); ++i)
        include(after.commands[i]);
    const cairo_rectangle_int_t whole{0, 0, after.width, after.height};
    cairo_region_intersect_rectangle(changed.get(), &whole);
    return changed;
}

void drawPicture(cairo_surface_t* surface, const Picture& picture, const cairo_region_t* region) {
    cairo_t* context = cairo_create(surface);
    clipTo(context, region);
    StaleRegion staleRegion(context, region);
    const bool beginsWithArea =
        !picture.commands.empty() && std::holds_alternative<FilledRectangle>(picture.commands.front());
    if (!beginsWithArea)
        staleRegion.clearAll();
    for (const DrawCommand& command : picture.commands) {
        const cairo_rectangle_int_t pixels = pixelsOf(command);
        if (cairo_region_contains_rectangle(region, &pixels) == CAIRO_REGION_OVERLAP_OUT)
            continue;
        const auto* rectangle = std::get_if<FilledRectangle>(&command);
        if (rectangle != nullptr && isOnWholePixels(rectangle->box)) {
            staleRegion.fill(*rectangle);
            continue;
        }
        staleRegion.clear(pixels);
        std::visit([context](const auto& drawn) { draw(context, drawn); }, command);
    }
    staleRegion.clearAll();
    cairo_destroy(context);
    cairo_surface_flush(surface);
}

void warmUpDrawing() {
    for (const bool isBold : {true, false})
        textMaskFor({u"Zażółć gęślą jaźń 0123456789", {0, 0, 124, 68}, 19, isBold, {}});
}

} // namespace rotika
