#pragma once

#include "platform/geometry_types.h"

#include <vector>

struct Monitors {
    std::vector<Rect> all; // never empty
    Rect primary;

    bool operator==(const Monitors&) const = default;
};

/// Asks the server, and makes the answer the one that primaryMonitor() goes by. Owner thread.
const Monitors& refreshMonitors();
