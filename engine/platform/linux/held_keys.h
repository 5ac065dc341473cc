#pragma once

#include "platform/linux/x11.h"

#include <vector>

namespace rotika {

/// The keys that this process holds down by injection. Any thread.
std::vector<KeyCode> heldKeycodes();

} // namespace rotika
