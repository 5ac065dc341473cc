#include "wheel/wheel_layout.h"

#include "model/engine_state.h"

#include <cmath>
#include <numbers>

namespace rotika {

std::int32_t hitTestField(std::int32_t x, std::int32_t y) {
    const double dx = x - wheelCentre.x;
    const double dy = y - wheelCentre.y;
    const double distance = std::sqrt(dx * dx + dy * dy);
    if (distance < innerRadiusPx || distance > outerLiveRadiusPx)
        return -1;
    const auto fieldCount = static_cast<std::int32_t>(activeWheelRecord().actions.size());
    const double span = 360.0 / fieldCount;
    double angle = std::atan2(dy, dx) * 180 / std::numbers::pi + 90;
    if (angle < 0)
        angle += 360;
    // The modulo handles a quotient rounded up at the end of the last field.
    return static_cast<std::int32_t>(angle / span) % fieldCount;
}

std::int32_t hitTestArrow(std::int32_t x, std::int32_t y) {
    if (engineState.wheels.size() < 2)
        return -1;
    if (arrowBoxes[0].contains({x, y}))
        return 0;
    return arrowBoxes[1].contains({x, y}) ? 1 : -1;
}

PicturePoint labelCentre(std::size_t field, float span) {
    const double spanDegrees = span;
    const double middle = static_cast<double>(field) * spanDegrees - 90 + spanDegrees / 2;
    const double radians = middle * std::numbers::pi / 180;
    return {static_cast<float>(std::cos(radians)) * labelRadiusPx + wheelCentre.x,
            static_cast<float>(std::sin(radians)) * labelRadiusPx + wheelCentre.y};
}

Point labelPoint(std::int32_t field, std::int32_t fieldCount) {
    const PicturePoint centre =
        labelCentre(static_cast<std::size_t>(field), 360.0F / static_cast<float>(fieldCount));
    return {static_cast<std::int32_t>(std::lround(centre.x)),
            static_cast<std::int32_t>(std::lround(centre.y))};
}

Rect wheelRectOn(const Rect& monitor) {
    const std::int32_t left = (monitor.left + monitor.right - layerWidthPx) / 2;
    const std::int32_t top = (monitor.top + monitor.bottom - layerHeightPx) / 2;
    return {left, top, left + layerWidthPx, top + layerHeightPx};
}

} // namespace rotika
