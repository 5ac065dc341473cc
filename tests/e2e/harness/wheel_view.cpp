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

namespace {

/// The arrow is white with a black edge along x = 0 and across the column x = 2 at 1 to 3 and 20 to 22: right
/// to a pixel. `left` and `top` are the tip's place on the screen.
bool showsCursorAt(const ScreenPart& part, int left, int top) {
    constexpr int nearlyPlain = 8;
    constexpr int halfCovered = 140;
    const auto isWhite = [&](int dx, int dy) {
        return differenceOf(part.at(left + dx, top + dy), {255, 255, 255}) < nearlyPlain;
    };
    const auto isDark = [&](int dx, int dy) {
        return differenceOf(part.at(left + dx, top + dy), {0, 0, 0}) < halfCovered;
    };
    if (!isWhite(2, 5) || !isWhite(2, 12) || !isWhite(2, 18) || !isWhite(6, 12) || isWhite(2, 1) ||
        isWhite(2, 21))
        return false;
    return (isDark(0, 6) || isDark(-1, 6)) && (isDark(0, 12) || isDark(-1, 12)) &&
           (isDark(0, 16) || isDark(-1, 16));
}

constexpr int shownWidth = 10; // so much of the arrow is looked at
constexpr int shownHeight = 24;

} // namespace

bool WheelView::cursorIsAt(LayerPoint point) const {
    const std::optional<ShownWindow> shown = window();
    if (!shown)
        return false;
    const int left = shown->left + point.x;
    const int top = shown->top + point.y;
    return showsCursorAt(eyes->look(left - 1, top, shownWidth, shownHeight), left, top);
}

std::optional<LayerPoint> WheelView::findCursor() const {
    const std::optional<ShownWindow> shown = window();
    if (!shown)
        return std::nullopt;
    const ScreenPart layer = eyes->look(shown->left - 1, shown->top, layerWidth + 1, layerHeight);
    for (int y = 0; y + shownHeight <= layerHeight; ++y) {
        for (int x = 0; x + shownWidth <= layerWidth; ++x) {
            if (showsCursorAt(layer, shown->left + x, shown->top + y))
                return LayerPoint{x, y};
        }
    }
    return std::nullopt;
}

} // namespace e2e
