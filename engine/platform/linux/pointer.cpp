#include "platform/pointer.h"

#include "platform/linux/connection.h"
#include "platform/linux/cursor_pin.h"
#include "platform/linux/injection_connection.h"
#include "platform/linux/monitors.h"

#include <algorithm>
#include <vector>

namespace rotika {

namespace {

Monitors knownMonitors;

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
    knownMonitors = queryMonitors();
    return knownMonitors;
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
    refreshMonitors();
    const auto holder = std::find_if(knownMonitors.all.begin(), knownMonitors.all.end(),
                                     [&](const Rect& monitor) { return monitor.contains(point); });
    return holder == knownMonitors.all.end() ? knownMonitors.primary : *holder;
}

Rect primaryMonitor() {
    if (ownerDisplay() == nullptr)
        return {};
    // The gaze calls this on each tick: the stored monitors, refreshed when the wheel opens and when the
    // monitors change, avoid a round trip.
    return (knownMonitors.all.empty() ? refreshMonitors() : knownMonitors).primary;
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
