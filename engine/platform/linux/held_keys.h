#pragma once

#include "platform/linux/x11.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace rotika {

// The keys that this process holds down by injection. Any thread; the lock is held only briefly, because the
// owner thread takes it too.

struct HeldKey {
    KeyCode code = 0;
    bool isLeftDown = false; // after the end of the function
};

/// True if the key was not held before.
bool noteHeld(std::uint16_t virtualKey, const HeldKey& key);

/// The key's former entry; code 0 if it was not held.
HeldKey removeHeld(std::uint16_t virtualKey);

/// The keycode that the key was pressed with; 0 if it is not held. The release uses it even if the layout has
/// changed.
KeyCode heldKeycode(std::uint16_t virtualKey);

std::vector<KeyCode> heldKeycodes();

std::vector<std::pair<std::uint16_t, HeldKey>> keysLeftDown();

} // namespace rotika
