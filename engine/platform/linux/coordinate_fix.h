#pragma once

#include "base/geometry.h"

#include "platform/linux/front_window.h"

namespace rotika {

/// How a program's coordinates become the screen's: some leave out the scale of the screen. Where it is 1
/// they are taken as they are.
struct CoordinateFix {
    Point from; // a corner, as the program says
    Point to;   // the same corner on the screen
    double scale = 1;

    Rect applied(const Rect& rect) const;
};

/// By where the program says that the window is.
CoordinateFix coordinateFix(const Rect& said, const WindowFacts& window);

/// Whether that can be this window: each edge may be off by about `tolerancePx`.
bool isPlaceOf(const Rect& said, const WindowFacts& window, std::int32_t tolerancePx);

} // namespace rotika
