#pragma once

#include "platform/linux/bus_connection.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace rotika {

/// Qt publishes an open context menu, but does not list it as a child. It numbers objects consecutively, so
/// the menu has one of the unused numbers between or after those seen. `seen`: program and path of the listed
/// objects. The result starts with the highest number; it is empty for other toolkits.
std::vector<BusObject> unlistedObjects(const std::set<std::pair<std::string, std::string>>& seen,
                                       const std::string& program);

} // namespace rotika
