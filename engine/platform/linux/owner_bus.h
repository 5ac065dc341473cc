#pragma once

#include <gio/gio.h>

#include <functional>
#include <string>

namespace rotika {

/// Connects to the bus at `address` in the background: a bus that hangs holds nothing up. `opened` is called
/// once by the owner's loop, with null if there is no such bus; what it asks and subscribes to is answered
/// by the owner's loop as well. The connection is kept to the end of the process. Owner thread.
void openOwnerBus(const std::string& address, std::function<void(GDBusConnection* bus)> opened);

/// Takes the values of an answer, or null if there was none of the type that was asked for.
using BusAnswer = std::function<void(GVariant* values)>;

/// Asks a program on the bus and returns at once. Whether the bus may start the program for it, and for how
/// long the answer is worth waiting, are said by `flags` and `limitMs` (-1: the bus's own limit).
struct BusCall {
    const char* program;
    const char* path;
    const char* interface;
    const char* method;
    const char* answerType;
    GDBusCallFlags flags = G_DBUS_CALL_FLAGS_NO_AUTO_START;
    int limitMs = -1;
};
void askOnOwnerBus(GDBusConnection* bus, const BusCall& call, GVariant* arguments, BusAnswer answered);

} // namespace rotika
