#include "shell/base/notification.h"

#include "common/linux/bus_address.h"
#include "common/linux/owner_bus.h"

// Many desktops show notifications, but no tray icons.
void showNotificationWithoutTray(const QString& title, const QString& text) {
    const std::string address = sessionBusAddress();
    if (address.empty())
        return;
    openOwnerBus(address, [title, text](GDBusConnection* bus) {
        if (bus == nullptr)
            return;
        const BusCall notify{"org.freedesktop.Notifications",
                             "/org/freedesktop/Notifications",
                             "org.freedesktop.Notifications",
                             "Notify",
                             "(u)",
                             G_DBUS_CALL_FLAGS_NONE};
        GVariant* const arguments =
            g_variant_new("(susssasa{sv}i)", "Rotika", 0U, "rotika", title.toUtf8().constData(),
                          text.toUtf8().constData(), nullptr, nullptr, -1);
        callOnOwnerBus(bus, notify, arguments, [bus](GVariant*) { g_object_unref(bus); });
    });
}
