#pragma once

#include "model/wheel_records.h"

#include <string>
#include <vector>

namespace rotika {

// Activation of settings and wheels. Owner thread.

/// Reloads the engine's files: settings, wheels, voice functions, and with them icons and phrases. Does not
/// apply the settings to the workers. Each problem is appended to `problems` as one line.
void reloadFiles(std::u16string& problems);

/// Activates those of `wheels` that have at least one field; false, with no change, if there is none.
bool activateWheels(std::vector<Wheel> wheels);

/// The same for the wheels of the file at `path`.
bool activateWheelFile(const std::u16string& path);

} // namespace rotika
