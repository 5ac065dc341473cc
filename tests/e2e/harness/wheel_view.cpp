#include "harness/wheel_view.h"

#include "harness/waiting.h"

#include <cmath>
#include <numbers>

namespace e2e {

LayerPoint fieldPoint(int index, int count, int radius) {
    const double turn = 2 * std::numbers::pi * (index + 0.5) / count;
    return {layerCentre.x + static_cast<int>(std::lround(std::sin(turn) * radius)),
            layerCentre.y - static_cast<int>(std::lround(std::cos(turn) * radius))};
}

std::optional<ShownWindow> WheelView::window() const {
    return eyes->shownWindow(layerWidth, layerHeight);
}

ScreenPoint WheelView::onScreen(LayerPoint point) const {
    const std::optional<ShownWindow> shown = window();
    if (!shown)
        throw ScenarioError("the wheel is not shown");
    return {shown->left + point.x, shown->top + point.y};
}

PixelColor WheelView::pixel(LayerPoint point) const {
    const ScreenPoint place = onScreen(point);
    return eyes->pixel(place.x, place.y);
}

// The arrow is white with a black edge along x = 0 and along the diagonal from the tip; what lies this far
// inside is plain white, and the edge is black in the middle of its width.
bool WheelView::cursorIsAt(LayerPoint point) const {
    if (!window())
        return false;
    const auto isWhite = [&](int dx, int dy) {
        return differenceOf(pixel({point.x + dx, point.y + dy}), {255, 255, 255}) < 8;
    };
    const auto isDark = [&](int dx, int dy) {
        return differenceOf(pixel({point.x + dx, point.y + dy}), {0, 0, 0}) < 140;
    };
    if (point.y + 28 > layerHeight || point.x + 14 > layerWidth)
        return true; // cut off by the layer's edge: nothing to see
    return isWhite(2, 8) && isWhite(2, 15) && isWhite(6, 12) && (isDark(0, 12) || isDark(-1, 12));
}

} // namespace e2e
