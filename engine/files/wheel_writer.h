#pragma once

#include "model/wheel_records.h"

#include <string>
#include <string_view>
#include <vector>

namespace rotika {

/// The canonical text of a wheel file, UTF-8. Everything is written, also what the reader would discard.
std::string serializeWheels(const std::vector<Wheel>& wheels);

/// `quotesOnly`: quotes and backslashes, but no control characters.
enum class JsonEscapes { all, quotesOnly };

/// The content of a JSON string literal, without its quotes, UTF-8.
std::string escapeJsonString(const std::u16string& text);

/// The same for UTF-8.
std::string escapeJsonString(std::string_view text, JsonEscapes escapes);

/// Replaces a whole file. Failures are silent and leave the old file unchanged.
void writeTextFile(const std::u16string& path, const std::string& bytes);

} // namespace rotika
