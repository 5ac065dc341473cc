#pragma once

#include "base/geometry.h"

#include "platform/linux/front_window.h"

namespace rotika {

/// Converts a program's coordinates to the screen's: some programs ignore the screen's scale. A scale of 1
/// changes nothing.
struct CoordinateFix {
    Point from; // a corner, as the program reports it
    Point to;   // the same corner on the screen
    double scale = 1;

    Rect applied(const Rect& rect) const;
};

/// Compares the place that the program reports with the window's actual place.
CoordinateFix coordinateFix(const Rect& reported, const WindowFacts& window);

/// Whether the reported place can be this window's: each edge may differ by about `tolerancePx`.
bool isPlaceOf(const Rect& reported, const WindowFacts& window, std::int32_t tolerancePx);

} // namespace rotika
