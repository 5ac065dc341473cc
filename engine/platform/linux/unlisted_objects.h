#pragma once

#include "platform/linux/bus_connection.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace rotika {

/// Qt publishes an open context menu, but lists it nowhere. It numbers what it publishes one by one, so the
/// menu is among the numbers that are missing in between or follow. `seen` are program and path of what is
/// listed; the latest come first. Nothing for other toolkits.
std::vector<BusObject> unlistedObjects(const std::set<std::pair<std::string, std::string>>& seen,
                                       const std::string& program);

} // namespace rotika
