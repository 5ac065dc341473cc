#include "platform/linux/coordinate_fix.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace rotika {

namespace {

// Real scales are 1.25 and above; a ratio nearer to 1 comes from the window's shadow.
constexpr double minScale = 1.2;
constexpr double maxSideDifference = 0.05;

Rect scaled(const Rect& rect, double scale) {
    const auto times = [scale](std::int32_t value) {
        return static_cast<std::int32_t>(std::lround(value * scale));
    };
    return {times(rect.left), times(rect.top), times(rect.right), times(rect.bottom)};
}

/// The scale between two rectangles, if both sides agree. `error`: how much they differ.
struct Scaling {
    double scale = 1;
    double error = 1;
};

Scaling scalingOf(const Rect& reported, const Rect& actual) {
    const double x = static_cast<double>(actual.width()) / reported.width();
    const double y = static_cast<double>(actual.height()) / reported.height();
    const double quarter = std::round(x * 4) / 4; // nearly all scales are multiples of 0.25
    const double error = (std::abs(x - y) + std::abs(x - quarter)) / x;
    if (x <= minScale || std::abs(x - y) >= maxSideDifference * x)
        return {};
    return {std::abs(x - quarter) < 0.01 * x ? quarter : x, error};
}

} // namespace

Rect CoordinateFix::applied(const Rect& rect) const {
    const auto moved = [this](std::int32_t value, std::int32_t start, std::int32_t end) {
        return end + static_cast<std::int32_t>(std::lround((value - start) * scale));
    };
    return {moved(rect.left, from.x, to.x), moved(rect.top, from.y, to.y), moved(rect.right, from.x, to.x),
            moved(rect.bottom, from.y, to.y)};
}

CoordinateFix coordinateFix(const Rect& reported, const WindowFacts& window) {
    // GTK reports the frame of a window that the window manager decorates, Qt never.
    const Scaling byPlace = scalingOf(reported, window.place);
    const Scaling byFrame = scalingOf(reported, window.frame);
    const bool isFrame = byFrame.error < byPlace.error;
    const Rect& actual = isFrame ? window.frame : window.place;
    const double scale = isFrame ? byFrame.scale : byPlace.scale;
    if (scale == 1)
        return {};
    return {{reported.left, reported.top}, {actual.left, actual.top}, scale};
}

bool isPlaceOf(const Rect& reported, const WindowFacts& window, std::int32_t tolerancePx) {
    const auto isNear = [&](const Rect& reportedPlace, const Rect& actual) {
        return std::abs(reportedPlace.left - actual.left) + std::abs(reportedPlace.top - actual.top) +
                   std::abs(reportedPlace.right - actual.right) +
                   std::abs(reportedPlace.bottom - actual.bottom) <
               4 * tolerancePx;
    };
    return std::ranges::any_of(std::array{window.place, window.frame}, [&](const Rect& actual) {
        return isNear(reported, actual) ||
               isNear(scaled(reported, scalingOf(reported, actual).scale), actual);
    });
}

} // namespace rotika
