#include "harness/wheel_view.h"

#include "harness/waiting.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

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

/// The arrow is white with a black edge along x = 0. `left` and `top` are the tip's place on the screen; some
/// pixels above and below it look the same. What shows around the arrow may have any colour, white letters
/// too.
bool showsCursorAt(const ScreenPart& part, int left, int top) {
    constexpr int nearlyPlain = 8;
    constexpr int halfCovered = 140;
    for (const auto& [dx, dy] : {std::pair{2, 6}, {2, 12}, {2, 17}, {6, 12}}) {
        if (differenceOf(part.at(left + dx, top + dy), {255, 255, 255}) >= nearlyPlain)
            return false;
    }
    for (const int dy : {6, 12, 17}) {
        if (std::min(differenceOf(part.at(left, top + dy), {0, 0, 0}),
                     differenceOf(part.at(left - 1, top + dy), {0, 0, 0})) >= halfCovered)
            return false;
    }
    return true;
}

constexpr int shownWidth = 10; // so much of the arrow is looked at
constexpr int shownHeight = 20;

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
    std::vector<LayerPoint> alike;
    for (int y = 0; y + shownHeight <= layerHeight; ++y) {
        for (int x = 0; x + shownWidth <= layerWidth; ++x) {
            if (showsCursorAt(layer, shown->left + x, shown->top + y))
                alike.push_back({x, y});
        }
    }
    if (alike.empty())
        return std::nullopt;
    return alike[alike.size() / 2];
}

} // namespace e2e
