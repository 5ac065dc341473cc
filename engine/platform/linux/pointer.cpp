#include "platform/pointer.h"

#include "platform/linux/connection.h"
#include "platform/linux/cursor_pin.h"
#include "platform/linux/injection_connection.h"
#include "platform/linux/monitors.h"

#include <algorithm>

namespace rotika {

Point cursorPosition() {
    if (ownerDisplay() == nullptr)
        return {};
    Window root = noXid;
    Window child = noXid;
    Point position;
    Point inWindow;
    unsigned int mask = 0;
    XQueryPointer(ownerDisplay(), rootWindow(), &root, &child, &position.x, &position.y, &inWindow.x,
                  &inWindow.y, &mask);
    return position;
}

void setCursorPosition(Point position) {
    // A warp to the current position would still send a motion event to the program below.
    if (ownerDisplay() == nullptr || isCursorPinned() || cursorPosition() == position)
        return;
    XWarpPointer(ownerDisplay(), noXid, rootWindow(), 0, 0, 0, 0, position.x, position.y);
    // Clicks use another connection and must not reach the server before the warp.
    XSync(ownerDisplay(), 0);
}

Rect monitorAt(Point point) {
    if (ownerDisplay() == nullptr)
        return {};
    const Monitors& monitors = refreshMonitors();
    const auto holder =
        std::ranges::find_if(monitors.all, [&](const Rect& each) { return each.contains(point); });
    return holder == monitors.all.end() ? monitors.primary : *holder;
}

Rect primaryMonitor() {
    if (ownerDisplay() == nullptr)
        return {};
    // The gaze calls this on each tick: the stored monitors avoid a round trip.
    return currentMonitors().primary;
}

bool mouseButtonsAreSwapped() {
    unsigned char mapping[8] = {};
    const InjectionConnection injection = lockInjectionConnection();
    if (injection.display == nullptr)
        return false;
    const int count = XGetPointerMapping(injection.display, mapping, sizeof mapping);
    return count >= 3 && mapping[0] == 3 && mapping[2] == 1;
}

} // namespace rotika
