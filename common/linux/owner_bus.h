#pragma once

// Qt defines this name of a GIO structure's member as a macro.
#undef signals
#include <gio/gio.h>

#include <functional>
#include <string>

/// Connects to the bus at `address` in the background: a bus that hangs blocks nothing. The owner's loop
/// calls `connected` once, with null if there is no such bus; replies and signals are also delivered by the
/// owner's loop. The connection is kept until the process ends. Owner thread.
void openOwnerBus(const std::string& address, std::function<void(GDBusConnection* bus)> connected);

/// Receives the values of a reply, or null if there was none of the requested type.
using BusReply = std::function<void(GVariant* values)>;

/// A method call to a program on the bus; returns at once. `flags`: whether the bus may start the program;
/// `limitMs`: the timeout, -1 for the bus's own.
struct BusCall {
    const char* program;
    const char* path;
    const char* interface;
    const char* method;
    const char* replyType;
    GDBusCallFlags flags = G_DBUS_CALL_FLAGS_NO_AUTO_START;
    int limitMs = -1;
};
void callOnOwnerBus(GDBusConnection* bus, const BusCall& call, GVariant* arguments, BusReply handler);
