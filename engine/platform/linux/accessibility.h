#pragma once

#include "platform/linux/bus_connection.h"

namespace rotika {

/// Opens the bus on which programs publish the contents of their windows. False if there is none.
bool openAccessibilityBus(BusConnection& bus);

/// The root of the accessibility tree: its children are the programs.
BusObject accessibilityDesktop();

} // namespace rotika
