#pragma once

#include "platform/linux/bus_connection.h"

/// Opens the bus on which programs publish what their windows hold. False if there is none.
bool openAccessibilityBus(BusConnection& bus);

/// The root of all that is published there: its children are the programs.
BusObject accessibilityDesktop();
