#pragma once

#include "base/geometry.h"

#include <vector>

namespace rotika {

struct Monitors {
    std::vector<Rect> all; // never empty
    Rect primary;

    bool operator==(const Monitors&) const = default;
};

/// Queries the server, and stores the result. Owner thread.
const Monitors& refreshMonitors();

/// The result of the last query: one is made when the wheel opens and when the monitors change. Owner thread.
const Monitors& currentMonitors();

} // namespace rotika
