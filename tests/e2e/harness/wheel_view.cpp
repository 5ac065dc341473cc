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
// inside is plain white, and the edge is black in the middle of its width. The point is so far from the
// layer's lower and right edge that this much of the arrow is there.
bool WheelView::cursorIsAt(LayerPoint point) const {
    const std::optional<ShownWindow> shown = window();
    if (!shown)
        return false;
    const int left = shown->left + point.x;
    const int top = shown->top + point.y;
    const ScreenPart part = eyes->look(left - 1, top, 10, 20);
    const auto differsFrom = [&](const PixelColor& color, int dx, int dy) {
        return differenceOf(part.at(left + dx, top + dy), color);
    };
    const PixelColor white{255, 255, 255};
    const PixelColor black{0, 0, 0};
    constexpr int nearlyPlain = 8;
    constexpr int halfCovered = 140;
    return differsFrom(white, 2, 8) < nearlyPlain && differsFrom(white, 2, 15) < nearlyPlain &&
           differsFrom(white, 6, 12) < nearlyPlain &&
           (differsFrom(black, 0, 12) < halfCovered || differsFrom(black, -1, 12) < halfCovered);
}

} // namespace e2e
