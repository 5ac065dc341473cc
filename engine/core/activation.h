#pragma once

#include "model/wheel_records.h"

#include <string>
#include <vector>

namespace rotika {

// Putting settings and wheels into force. Owner thread.

/// Reads the engine's files again: settings, wheels, voice functions, and with them icons and phrases. The
/// workers do not follow the settings yet. Each problem is appended to `problems` as one line.
void reloadFiles(std::u16string& problems);

/// Puts those of `wheels` in force that have at least one field; false and nothing changed if there is none.
bool activateWheels(std::vector<Wheel> wheels);

/// The same for the wheels of the file at `path`.
bool activateWheelFile(const std::u16string& path);

} // namespace rotika
