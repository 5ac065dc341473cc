#pragma once

#include <string>

/// The address of the user's session bus, empty if there is none. GIO's own search is not used: it may start
/// a new, empty bus. Any thread.
std::string sessionBusAddress();
