#include "platform/linux/monitors.h"

#include "platform/linux/connection.h"

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

const Monitors& currentMonitors() {
    return knownMonitors.all.empty() ? refreshMonitors() : knownMonitors;
}

} // namespace rotika
