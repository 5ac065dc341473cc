#include "platform/linux/monitor_changes.h"

#include "platform/linux/connection.h"
#include "platform/linux/monitors.h"
#include "platform/linux/owner_loop.h"
#include "platform/linux/root_events.h"

namespace rotika {

namespace {

// A mode change sends several events, some of them in an intermediate state.
constexpr guint settlingMs = 100;

struct MonitorWatch {
    void (*changed)() noexcept = nullptr;
    Monitors known;
    int randrEventBase = 0;
    bool isSettling = false;
};
MonitorWatch watch;

gboolean compareMonitors(gpointer) noexcept {
    watch.isSettling = false;
    const Monitors& now = refreshMonitors();
    if (now != watch.known) {
        watch.known = now;
        watch.changed();
    }
    return G_SOURCE_REMOVE;
}

void compareWhenSettled() {
    if (watch.isSettling)
        return;
    watch.isSettling = true;
    callOwnerAfter(settlingMs, compareMonitors, nullptr);
}

bool handleMonitorEvent(XEvent& event) {
    const bool isResize = event.type == ConfigureNotify && event.xconfigure.window == rootWindow();
    const bool isRandr = event.type == watch.randrEventBase + RRScreenChangeNotify ||
                         event.type == watch.randrEventBase + RRNotify;
    if (!isResize && !isRandr)
        return false;
    XRRUpdateConfiguration(&event); // updates Xlib's cached screen size
    compareWhenSettled();
    return isRandr;
}

} // namespace

void watchMonitors(void (*changed)() noexcept) {
    int errorBase = 0;
    XRRQueryExtension(ownerDisplay(), &watch.randrEventBase, &errorBase);
    watch.changed = changed;
    watch.known = refreshMonitors();
    addEventHandler(handleMonitorEvent);
    XRRSelectInput(ownerDisplay(), rootWindow(),
                   RRScreenChangeNotifyMask | RRCrtcChangeNotifyMask | RROutputChangeNotifyMask);
    selectRootEvents(StructureNotifyMask); // user-defined monitors are reported only by a resize
}

} // namespace rotika
