#pragma once

#include "core/wheel_records.h"

#include <string>
#include <string_view>

/// The one road by which the engine's files come into memory: writes the missing ones, reads config.json into
/// engineConfig, then the wheels and the voice functions into engineState. Never stops at bad data: each
/// problem is appended to `problems` as one line that ends in a line feed. Owner thread.
void loadConfiguration(std::u16string& problems);

/// "#RRGGBB" exactly, either case. On false `color` is untouched.
bool parseHexColor(std::u16string_view text, RgbColor& color);
