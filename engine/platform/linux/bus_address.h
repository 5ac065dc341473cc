#pragma once

#include <string>

namespace rotika {

/// The address of the person's session bus, empty if there is none. GIO's own ways of looking for one may
/// start a bus that nobody else is on. Any thread.
std::string sessionBusAddress();

} // namespace rotika
