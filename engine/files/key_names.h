#pragma once

#include "model/wheel_records.h"

#include <string>

namespace rotika {

/// Reads a token such as "x", "F5", "spacja" or "lmb". For an unknown token the KeyCode is not valid, but
/// its `text` is set. A single character is looked up on the active keyboard layout. Owner thread.
KeyCode parseKeyCode(std::u16string text);

} // namespace rotika
