#include "platform/linux/monitor_changes.h"

#include "platform/geometry_types.h"

#include "platform/linux/connection.h"
#include "platform/linux/glib_handles.h"
#include "platform/linux/root_events.h"

#include <vector>

namespace {

// A mode change comes as several events, some of them while the screen is half way.
constexpr guint settlingMs = 100;

struct MonitorWatch {
    void (*changed)() noexcept = nullptr;
    std::vector<Rect> known; // the primary one first
    int randrEventBase = 0;
    bool isSettling = false;
};
MonitorWatch watch;

std::vector<Rect> currentMonitors() {
    int count = 0;
    XRRMonitorInfo* infos = XRRGetMonitors(ownerDisplay(), rootWindow(), 1, &count);
    std::vector<Rect> monitors;
    for (int i = 0; i < count; ++i) {
        const Rect place{infos[i].x, infos[i].y, infos[i].x + infos[i].width, infos[i].y + infos[i].height};
        monitors.insert(infos[i].primary != 0 ? monitors.begin() : monitors.end(), place);
    }
    if (infos != nullptr)
        XRRFreeMonitors(infos);
    return monitors;
}

gboolean compareMonitors(gpointer) noexcept {
    watch.isSettling = false;
    std::vector<Rect> now = currentMonitors();
    if (now != watch.known) {
        watch.known = std::move(now);
        watch.changed();
    }
    return G_SOURCE_REMOVE;
}

void compareWhenSettled() {
    if (watch.isSettling)
        return;
    watch.isSettling = true;
    GSource* source = g_timeout_source_new(settlingMs);
    g_source_set_callback(source, compareMonitors, nullptr, nullptr);
    g_source_attach(source, ownerContext());
    g_source_unref(source);
}

bool handleMonitorEvent(XEvent& event) {
    const bool isResize = event.type == ConfigureNotify && event.xconfigure.window == rootWindow();
    const bool isRandr = event.type == watch.randrEventBase + RRScreenChangeNotify ||
                         event.type == watch.randrEventBase + RRNotify;
    if (!isResize && !isRandr)
        return false;
    XRRUpdateConfiguration(&event); // Xlib's own idea of the screen's size
    compareWhenSettled();
    return isRandr;
}

} // namespace

void watchMonitors(void (*changed)() noexcept) {
    int errorBase = 0;
    XRRQueryExtension(ownerDisplay(), &watch.randrEventBase, &errorBase);
    watch.changed = changed;
    watch.known = currentMonitors();
    addEventHandler(handleMonitorEvent);
    XRRSelectInput(ownerDisplay(), rootWindow(),
                   RRScreenChangeNotifyMask | RRCrtcChangeNotifyMask | RROutputChangeNotifyMask);
    selectRootEvents(StructureNotifyMask); // monitors that a person has defined come as a resize alone
}
