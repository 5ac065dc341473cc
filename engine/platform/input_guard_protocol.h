#pragma once

#include <cstdint>

// What the program tells the guard process through a pipe: one record for each change. The end of the pipe
// means that the program has died, in whatever way; the guard then lets go of all that is still recorded as
// down.

enum class GuardedThing : std::uint8_t {
    key = 0,             // code: virtual key on Windows, keycode on X11
    button = 1,          // code: device button, 0 to 4 as the engine counts on Windows, the X button on X11
    pointerPin = 2,      // the cursor is held in place; code is 0
    autoRepeat = 3,      // X11: this keycode's auto-repeat is switched off
    borrowedKeycode = 4, // X11: this keycode, unused before, carries a key that the layout lacks
};

struct GuardRecord {
    GuardedThing kind = GuardedThing::key;
    std::uint8_t down = 0;     // 1 from before the press on, 0 from after the release on
    std::uint8_t extended = 0; // keys of the extended block
    std::uint8_t reserved = 0;
    std::uint32_t code = 0;
};

static_assert(sizeof(GuardRecord) == 8, "both processes read whole records of eight bytes");
