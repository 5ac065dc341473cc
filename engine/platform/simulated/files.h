#pragma once

#include <cstddef>
#include <optional>

namespace rotika {

/// Sets the free disk space in bytes; a write that does not fit is cut off and fails. Nullopt: no limit.
void setSimulatedDiskSpace(std::optional<std::size_t> bytes);

} // namespace rotika
