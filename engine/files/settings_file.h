#pragma once

#include "model/wheel_records.h"

#include <string>
#include <string_view>

namespace rotika {

/// The one road by which the engine's files come into memory: writes the missing ones, reads config.json into
/// engineConfig, then the wheels and the voice functions into engineState. Never stops at bad data: each
/// problem is appended to `problems` as one line that ends in a line feed. Owner thread.
void loadConfiguration(std::u16string& problems);

} // namespace rotika
