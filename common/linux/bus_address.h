#pragma once

// Qt defines this name of a GIO structure's member as a macro.
#undef signals
#include <gio/gio.h>

#include <string>

/// The address of the user's session bus, empty if there is none. GIO's own search is not used: it may start
/// a new, empty bus. Any thread.
std::string sessionBusAddress();

/// From now on this process, its libraries included, uses no session bus. Before other threads exist.
void disableSessionBus();

/// The programs that this one starts use the session bus nevertheless. Any thread.
void enableSessionBusIn(GAppLaunchContext* programs);
