#pragma once

#include "base/geometry.h"

#include <vector>

namespace rotika {

struct Monitors {
    std::vector<Rect> all; // never empty
    Rect primary;

    bool operator==(const Monitors&) const = default;
};

/// Asks the server, and makes the answer the one that primaryMonitor() goes by. Owner thread.
const Monitors& refreshMonitors();

} // namespace rotika
