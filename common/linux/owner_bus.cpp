#include "common/linux/owner_bus.h"

#include <memory>
#include <utility>

namespace {

using ConnectedHandler = std::function<void(GDBusConnection* bus)>;

void onConnected(GObject*, GAsyncResult* result, gpointer data) noexcept {
    const std::unique_ptr<ConnectedHandler> connected(static_cast<ConnectedHandler*>(data));
    (*connected)(g_dbus_connection_new_for_address_finish(result, nullptr));
}

void onReply(GObject* bus, GAsyncResult* result, gpointer data) noexcept {
    const std::unique_ptr<BusReply> handler(static_cast<BusReply*>(data));
    GVariant* values = g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, nullptr);
    (*handler)(values);
    if (values != nullptr)
        g_variant_unref(values);
}

} // namespace

void openOwnerBus(const std::string& address, ConnectedHandler connected) {
    const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                         G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    auto handler = std::make_unique<ConnectedHandler>(std::move(connected));
    g_dbus_connection_new_for_address(address.c_str(), flags, nullptr, nullptr, onConnected,
                                      handler.release());
}

void callOnOwnerBus(GDBusConnection* bus, const BusCall& call, GVariant* arguments, BusReply handler) {
    auto kept = std::make_unique<BusReply>(std::move(handler));
    g_dbus_connection_call(bus, call.program, call.path, call.interface, call.method, arguments,
                           G_VARIANT_TYPE(call.replyType), call.flags, call.limitMs, nullptr, onReply,
                           kept.release());
}
