#include "common/linux/bus_address.h"
#include "common/linux/owner_bus.h"
#include "shell/process/event_loop_support.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QTimer>
#include <memory>

// Last: its macros break Qt's headers.
// clang-format off
#include <X11/Xlib.h>
// clang-format on

namespace {

constexpr int pollMs = 200;

/// Shared with replies of the bus, which may come late.
struct Search {
    GDBusConnection* bus = nullptr;
    bool isPending = false;
    bool isFound = false;
};

/// The older kind of tray owns a selection of the X server.
bool hasSelectionOwner() {
    auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr)
        return false;
    const QByteArray name = "_NET_SYSTEM_TRAY_S" + QByteArray::number(XDefaultScreen(x11->display()));
    return XGetSelectionOwner(x11->display(), XInternAtom(x11->display(), name, 0)) != 0;
}

/// The newer kind is a program on the session bus that says whether a panel shows the icons.
void askBus(const std::shared_ptr<Search>& search) {
    search->isPending = true;
    constexpr char watcher[] = "org.kde.StatusNotifierWatcher";
    const BusCall call{watcher, "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties", "Get", "(v)"};
    GVariant* arguments = g_variant_new("(ss)", watcher, "IsStatusNotifierHostRegistered");
    callOnOwnerBus(search->bus, call, arguments, [search](GVariant* values) {
        search->isPending = false;
        GVariant* value = nullptr;
        if (values == nullptr)
            return;
        g_variant_get(values, "(v)", &value);
        search->isFound = g_variant_is_of_type(value, G_VARIANT_TYPE_BOOLEAN) != FALSE &&
                          g_variant_get_boolean(value) != FALSE;
        g_variant_unref(value);
    });
}

} // namespace

bool waitForTray(int limitMs, const std::function<bool()>& mayWait) {
    const auto search = std::make_shared<Search>();
    const std::string address = sessionBusAddress();
    if (!address.empty())
        openOwnerBus(address, [search](GDBusConnection* bus) { search->bus = bus; });
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&loop, &mayWait, search] {
        search->isFound = search->isFound || hasSelectionOwner();
        if (search->isFound || !mayWait())
            loop.quit();
        else if (search->bus != nullptr && !search->isPending)
            askBus(search);
    });
    poll.start(pollMs);
    QTimer::singleShot(limitMs, &loop, &QEventLoop::quit);
    loop.exec();
    return search->isFound;
}
