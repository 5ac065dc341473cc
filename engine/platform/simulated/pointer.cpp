#include "platform/pointer.h"

#include "platform/simulated/simulated_desktop.h"

#include <algorithm>

namespace rotika {

Point cursorPosition() {
    simulatedDesktop().requireOwner("cursor queried on a worker");
    return simulatedDesktop().cursor;
}

void setCursorPosition(Point position) {
    SimulatedDesktop& desktop = simulatedDesktop();
    desktop.requireOwner("cursor moved by a worker");
    desktop.note(JournalKind::cursor,
                 "cursor " + std::to_string(position.x) + "," + std::to_string(position.y));
    if (!desktop.pinnedAt)
        desktop.cursor = position;
}

Rect monitorAt(Point point) {
    simulatedDesktop().requireOwner("monitor queried on a worker");
    const std::vector<Rect>& monitors = simulatedDesktop().monitors;
    const auto found =
        std::ranges::find_if(monitors, [point](const Rect& rect) { return rect.contains(point); });
    return found == monitors.end() ? monitors.front() : *found;
}

Rect primaryMonitor() {
    simulatedDesktop().requireOwner("monitor queried on a worker");
    return simulatedDesktop().monitors.front();
}

bool mouseButtonsAreSwapped() {
    return simulatedDesktop().buttonsAreSwapped;
}

} // namespace rotika
