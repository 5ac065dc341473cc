#pragma once

#include "model/wheel_records.h"

#include <string>
#include <vector>

namespace rotika {

/// The canonical text of a wheel file, UTF-8. It writes all that it is given, also what the reader would
/// drop.
std::string serializeWheels(const std::vector<Wheel>& wheels);

/// The inside of a JSON string, UTF-8.
std::string escapeJsonString(const std::u16string& text);

/// Whole-file write that reports nothing; a failure leaves the old file whole.
void writeTextFile(const std::u16string& path, const std::string& bytes);

} // namespace rotika
