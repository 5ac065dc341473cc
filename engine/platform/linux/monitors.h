#pragma once

#include "base/geometry.h"

#include <vector>

namespace rotika {

struct Monitors {
    std::vector<Rect> all; // never empty
    Rect primary;

    bool operator==(const Monitors&) const = default;
};

/// Queries the server and stores the result for primaryMonitor(). Owner thread.
const Monitors& refreshMonitors();

} // namespace rotika
