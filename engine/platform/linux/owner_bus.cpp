#include "platform/linux/owner_bus.h"

#include <memory>
#include <utility>

namespace rotika {

namespace {

using Opened = std::function<void(GDBusConnection* bus)>;

void takeBus(GObject*, GAsyncResult* result, gpointer data) noexcept {
    const std::unique_ptr<Opened> opened(static_cast<Opened*>(data));
    (*opened)(g_dbus_connection_new_for_address_finish(result, nullptr));
}

void takeAnswer(GObject* bus, GAsyncResult* result, gpointer data) noexcept {
    const std::unique_ptr<BusAnswer> answered(static_cast<BusAnswer*>(data));
    GVariant* values = g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, nullptr);
    (*answered)(values);
    if (values != nullptr)
        g_variant_unref(values);
}

} // namespace

void openOwnerBus(const std::string& address, Opened opened) {
    const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                         G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    auto handler = std::make_unique<Opened>(std::move(opened));
    g_dbus_connection_new_for_address(address.c_str(), flags, nullptr, nullptr, takeBus, handler.release());
}

void askOnOwnerBus(GDBusConnection* bus, const BusCall& call, GVariant* arguments, BusAnswer answered) {
    auto handler = std::make_unique<BusAnswer>(std::move(answered));
    g_dbus_connection_call(bus, call.program, call.path, call.interface, call.method, arguments,
                           G_VARIANT_TYPE(call.answerType), call.flags, call.limitMs, nullptr, takeAnswer,
                           handler.release());
}

} // namespace rotika
