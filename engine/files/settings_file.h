#pragma once

#include <string>

namespace rotika {

/// Loads the engine's files: writes the missing ones, reads config.json into engineConfig, then the wheels
/// and the voice functions into engineState. Invalid data does not stop it: each problem is appended to
/// `problems` as one line that ends in a line feed. Owner thread.
void loadConfiguration(std::u16string& problems);

} // namespace rotika
