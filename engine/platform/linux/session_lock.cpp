#include "platform/linux/session_lock.h"

#include "common/linux/bus_address.h"
#include "common/linux/owner_bus.h"

#include "platform/linux/connection.h"
#include "platform/linux/owner_loop.h"
#include "platform/linux/root_events.h"

#include <array>
#include <cstdlib>
#include <set>
#include <string>

namespace rotika {

// No single source reports whether a session is locked. Each desktop's locker reports it on the session bus,
// logind keeps a hint that some lockers set, and XScreenSaver sets a property. The session counts as locked
// while any of them reports it. A locker that reports nowhere is not detected: a grabbed keyboard may as well
// be an open menu.

namespace {

struct Locker {
    const char* name; // also of its interface
    std::array<const char*, 2> paths;
};
constexpr Locker lockers[] = {
    {"org.freedesktop.ScreenSaver", {"/org/freedesktop/ScreenSaver", "/ScreenSaver"}},
    {"org.gnome.ScreenSaver", {"/org/gnome/ScreenSaver", "/"}},
    {"org.cinnamon.ScreenSaver", {"/org/cinnamon/ScreenSaver", "/"}},
    {"org.mate.ScreenSaver", {"/org/mate/ScreenSaver", "/"}},
    {"org.xfce.ScreenSaver", {"/org/xfce/ScreenSaver", "/"}},
};

constexpr char logind[] = "org.freedesktop.login1";
constexpr char sessionInterface[] = "org.freedesktop.login1.Session";
constexpr char lockRequest[] = "lock request";
constexpr char screenSaverProperty[] = "_SCREENSAVER_STATUS";

// The signal Lock is only a request. Within this time a locker reports that it has locked, or there is none.
constexpr guint lockRequestSeconds = 5;

struct SessionLock {
    void (*changed)(bool isLocked) noexcept = nullptr;
    std::set<std::string> lockedSources; // sources that report the session as locked
    std::string sessionPath;             // of our session in logind, empty if unknown
    GSource* requestEnd = nullptr;
    GDBusConnection* sessionBus = nullptr; // null: none, or not open yet
};

SessionLock& sessionLock() {
    static SessionLock* const instance = new SessionLock; // never destroyed: late bus callbacks
    return *instance;
}

void setLocked(const std::string& source, bool isLocked) {
    SessionLock& lock = sessionLock();
    const bool wasLocked = !lock.lockedSources.empty();
    if (isLocked)
        lock.lockedSources.insert(source);
    else
        lock.lockedSources.erase(source);
    if (lock.lockedSources.empty() == wasLocked)
        lock.changed(!wasLocked);
}

// The lockers of the desktops

void queryLocker(GDBusConnection* bus, const Locker& locker) {
    for (const char* path : locker.paths) {
        const BusCall call{locker.name, path, locker.name, "GetActive", "(b)"};
        callOnOwnerBus(bus, call, nullptr, [&locker](GVariant* values) {
            gboolean isActive = FALSE;
            if (values == nullptr) // not at this path, or a program that only inhibits the screen saver
                return;
            g_variant_get(values, "(b)", &isActive);
            setLocked(locker.name, isActive != FALSE);
        });
    }
}

void onActiveChanged(GDBusConnection*, const gchar*, const gchar*, const gchar* interface, const gchar*,
                     GVariant* values, gpointer) noexcept {
    gboolean isActive = FALSE;
    if (!g_variant_is_of_type(values, G_VARIANT_TYPE("(b)")))
        return;
    g_variant_get(values, "(b)", &isActive);
    setLocked(interface, isActive != FALSE);
}

void onLockerAppeared(GDBusConnection* bus, const gchar*, const gchar*, gpointer locker) noexcept {
    queryLocker(bus, *static_cast<const Locker*>(locker));
}

/// Also called when the bus itself has closed.
void onLockerVanished(GDBusConnection*, const gchar* name, gpointer) noexcept {
    setLocked(name, false);
}

void watchLockers(GDBusConnection* bus) {
    if (bus == nullptr)
        return;
    sessionLock().sessionBus = bus;
    for (const Locker& locker : lockers) {
        g_dbus_connection_signal_subscribe(bus, locker.name, locker.name, "ActiveChanged", nullptr, nullptr,
                                           G_DBUS_SIGNAL_FLAGS_NONE, onActiveChanged, nullptr, nullptr);
        g_bus_watch_name_on_connection(bus, locker.name, G_BUS_NAME_WATCHER_FLAGS_NONE, onLockerAppeared,
                                       onLockerVanished, const_cast<Locker*>(&locker), nullptr);
    }
}

// logind

void endLockRequest() {
    GSource*& end = sessionLock().requestEnd;
    if (end != nullptr) {
        g_source_destroy(end);
        g_source_unref(end);
        end = nullptr;
    }
    setLocked(lockRequest, false);
}

gboolean onLockRequestEnd(gpointer) noexcept {
    endLockRequest();
    return G_SOURCE_REMOVE;
}

void beginLockRequest() {
    setLocked(lockRequest, true);
    GSource*& end = sessionLock().requestEnd;
    if (end != nullptr)
        return;
    end = g_timeout_source_new_seconds(lockRequestSeconds);
    g_source_set_callback(end, onLockRequestEnd, nullptr, nullptr);
    g_source_attach(end, ownerContext());
}

void queryLockedHint(GDBusConnection* bus) {
    const BusCall call{logind, sessionLock().sessionPath.c_str(), "org.freedesktop.DBus.Properties", "Get",
                       "(v)"};
    callOnOwnerBus(bus, call, g_variant_new("(ss)", sessionInterface, "LockedHint"), [](GVariant* values) {
        if (values == nullptr)
            return;
        GVariant* hint = nullptr;
        g_variant_get(values, "(v)", &hint);
        if (g_variant_is_of_type(hint, G_VARIANT_TYPE_BOOLEAN))
            setLocked(logind, g_variant_get_boolean(hint) != FALSE);
        g_variant_unref(hint);
    });
}

void onLogindAppeared(GDBusConnection* bus, const gchar*, const gchar*, gpointer) noexcept {
    const char* id = std::getenv("XDG_SESSION_ID");
    // "auto" is the caller's session or, for a program started by a service manager, the user's.
    GVariant* arguments = g_variant_new("(s)", id == nullptr || *id == '\0' ? "auto" : id);
    const BusCall call{logind, "/org/freedesktop/login1", "org.freedesktop.login1.Manager", "GetSession",
                       "(o)"};
    callOnOwnerBus(bus, call, arguments, [bus](GVariant* values) {
        if (values == nullptr)
            return;
        const char* path = nullptr;
        g_variant_get(values, "(&o)", &path);
        sessionLock().sessionPath = path;
        queryLockedHint(bus);
    });
}

void onLogindVanished(GDBusConnection*, const gchar*, gpointer) noexcept {
    sessionLock().sessionPath.clear();
    endLockRequest();
    setLocked(logind, false);
}

void onSessionSignal(GDBusConnection* bus, const gchar*, const gchar* path, const gchar*, const gchar* signal,
                     GVariant*, gpointer) noexcept {
    if (path != sessionLock().sessionPath)
        return;
    const std::string name = signal;
    if (name == "Lock")
        beginLockRequest();
    else if (name == "Unlock")
        endLockRequest();
    else if (name == "PropertiesChanged")
        queryLockedHint(bus);
}

void watchLogind(GDBusConnection* bus) {
    if (bus == nullptr)
        return;
    g_dbus_connection_signal_subscribe(bus, logind, sessionInterface, nullptr, nullptr, nullptr,
                                       G_DBUS_SIGNAL_FLAGS_NONE, onSessionSignal, nullptr, nullptr);
    g_dbus_connection_signal_subscribe(bus, logind, "org.freedesktop.DBus.Properties", "PropertiesChanged",
                                       nullptr, sessionInterface, G_DBUS_SIGNAL_FLAGS_NONE, onSessionSignal,
                                       nullptr, nullptr);
    g_bus_watch_name_on_connection(bus, logind, G_BUS_NAME_WATCHER_FLAGS_NONE, onLogindAppeared,
                                   onLogindVanished, nullptr, nullptr);
}

std::string systemBusAddress() {
    const char* address = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    return address != nullptr && *address != '\0' ? address : "unix:path=/var/run/dbus/system_bus_socket";
}

// XScreenSaver

void readScreenSaverProperty() {
    const unsigned long status = windowProperty(rootWindow(), atomNamed(screenSaverProperty), XA_INTEGER, 0);
    setLocked(screenSaverProperty, status != 0 && status == atomNamed("LOCK"));
}

bool handleRootProperty(XEvent& event) {
    if (event.type != PropertyNotify || event.xproperty.window != rootWindow() ||
        event.xproperty.atom != atomNamed(screenSaverProperty))
        return false;
    readScreenSaverProperty();
    return true;
}

} // namespace

void watchSessionLock(void (*changed)(bool isLocked) noexcept) {
    sessionLock().changed = changed;
    addEventHandler(handleRootProperty);
    selectRootEvents(PropertyChangeMask);
    readScreenSaverProperty();
    openOwnerBus(systemBusAddress(), watchLogind);
    const std::string sessionBus = sessionBusAddress();
    if (!sessionBus.empty())
        openOwnerBus(sessionBus, watchLockers);
}

void reportActivityToLockers() {
    if (sessionLock().sessionBus == nullptr)
        return;
    for (const Locker& locker : lockers) {
        if (!sessionLock().lockedSources.contains(locker.name))
            continue;
        for (const char* path : locker.paths)
            callOnOwnerBus(sessionLock().sessionBus,
                           {locker.name, path, locker.name, "SimulateUserActivity", "()"}, nullptr,
                           [](GVariant*) {});
    }
}

} // namespace rotika
