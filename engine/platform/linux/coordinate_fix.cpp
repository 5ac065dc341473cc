#include "platform/linux/coordinate_fix.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace rotika {

namespace {

// Scales are known to be of at least a quarter; what is nearer to one is a shadow around the window.
constexpr double leastScale = 1.2;
constexpr double unevenness = 0.05;

Rect scaled(const Rect& rect, double scale) {
    const auto times = [scale](std::int32_t value) {
        return static_cast<std::int32_t>(std::lround(value * scale));
    };
    return {times(rect.left), times(rect.top), times(rect.right), times(rect.bottom)};
}

/// What makes of the one the other, if the sides agree. `error` tells how well.
struct Scaling {
    double scale = 1;
    double error = 1;
};

Scaling scalingOf(const Rect& said, const Rect& real) {
    const double x = static_cast<double>(real.width()) / said.width();
    const double y = static_cast<double>(real.height()) / said.height();
    const double quarter = std::round(x * 4) / 4; // nearly all scales are some of these
    const double error = (std::abs(x - y) + std::abs(x - quarter)) / x;
    if (x <= leastScale || std::abs(x - y) >= unevenness * x)
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

CoordinateFix coordinateFix(const Rect& said, const WindowFacts& window) {
    // GTK tells the frame of a window that the window manager decorates, Qt never.
    const Scaling byPlace = scalingOf(said, window.place);
    const Scaling byFrame = scalingOf(said, window.frame);
    const bool isFrame = byFrame.error < byPlace.error;
    const Rect& real = isFrame ? window.frame : window.place;
    const double scale = isFrame ? byFrame.scale : byPlace.scale;
    if (scale == 1)
        return {};
    return {{said.left, said.top}, {real.left, real.top}, scale};
}

bool isPlaceOf(const Rect& said, const WindowFacts& window, std::int32_t tolerancePx) {
    const auto isNear = [&](const Rect& seen, const Rect& real) {
        return std::abs(seen.left - real.left) + std::abs(seen.top - real.top) +
                   std::abs(seen.right - real.right) + std::abs(seen.bottom - real.bottom) <
               4 * tolerancePx;
    };
    return std::ranges::any_of(std::array{window.place, window.frame}, [&](const Rect& real) {
        return isNear(said, real) || isNear(scaled(said, scalingOf(said, real).scale), real);
    });
}

} // namespace rotika
