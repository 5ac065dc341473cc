#pragma once

#include "platform/linux/bus_connection.h"

namespace rotika {

/// Opens the bus on which programs publish what their windows hold. False if there is none.
bool openAccessibilityBus(BusConnection& bus);

/// The root of all that is published there: its children are the programs.
BusObject accessibilityDesktop();

} // namespace rotika
