#include "platform/pointer.h"

#include "platform/linux/connection.h"
#include "platform/linux/cursor_pin.h"
#include "platform/linux/injection_connection.h"
#include "platform/linux/monitors.h"

#include <algorithm>
#include <vector>

namespace rotika {

namespace {

Monitors known;

Monitors queryMonitors() {
    int count = 0;
    XRRMonitorInfo* infos = XRRGetMonitors(ownerDisplay(), rootWindow(), 1, &count);
    Monitors monitors;
    for (int i = 0; i < count; ++i) {
        const Rect rect{infos[i].x, infos[i].y, infos[i].x + infos[i].width, infos[i].y + infos[i].height};
        monitors.all.push_back(rect);
        if (infos[i].primary != 0 || i == 0)
            monitors.primary = rect;
    }
    if (infos != nullptr)
        XRRFreeMonitors(infos);
    if (monitors.all.empty()) {
        const int screen = DefaultScreen(ownerDisplay());
        monitors.primary = {0, 0, DisplayWidth(ownerDisplay(), screen),
                            DisplayHeight(ownerDisplay(), screen)};
        monitors.all.push_back(monitors.primary);
    }
    return monitors;
}

} // namespace

const Monitors& refreshMonitors() {
    known = queryMonitors();
    return known;
}

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
    // A warp to where the cursor stands would still send a motion event to the program below.
    if (ownerDisplay() == nullptr || isCursorPinned() || cursorPosition() == position)
        return;
    XWarpPointer(ownerDisplay(), noXid, rootWindow(), 0, 0, 0, 0, position.x, position.y);
    // Clicks go over another connection, and must not come there before the warp.
    XSync(ownerDisplay(), 0);
}

Rect monitorAt(Point point) {
    if (ownerDisplay() == nullptr)
        return {};
    refreshMonitors();
    const auto holder = std::find_if(known.all.begin(), known.all.end(),
                                     [&](const Rect& monitor) { return monitor.contains(point); });
    return holder == known.all.end() ? known.primary : *holder;
}

Rect primaryMonitor() {
    if (ownerDisplay() == nullptr)
        return {};
    // The gaze asks on each tick: the answer is as old as the last opening of the wheel or change of the
    // monitors, which spares a round trip.
    return (known.all.empty() ? refreshMonitors() : known).primary;
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
