#pragma once

#include <cstdint>

namespace rotika {

// What the program tells the guard process through a pipe: one record for each change. The end of the pipe
// means that the program has died, in whatever way; the guard then lets go of all that is still recorded as
// down. While a pointer is pinned the program sends heartbeats, and captureSilenceLimitMs after the last one
// the guard gives the mouse back, since a program that stands still cannot.

enum class GuardedThing : std::uint8_t {
    key = 0,             // code: virtual key on Windows, keycode on X11
    button = 1,          // code: device button, 0 to 4 as the engine counts on Windows, the X button on X11
    pointerPin = 2,      // Windows: the cursor is held in place, code is 0; X11: codeOfPinnedDevice
    autoRepeat = 3,      // X11: this keycode's auto-repeat is switched off
    borrowedKeycode = 4, // X11: this keycode, unused before, carries a key that the layout lacks
    heartbeat = 5,       // the thread that holds the pointer is alive; nothing is down or up
    heldButton = 6,      // X11: this X button was down on a mouse when the mouse was pinned
};

struct GuardRecord {
    GuardedThing kind = GuardedThing::key;
    std::uint8_t down = 0;     // 1 from before the press on, 0 from after the release on
    std::uint8_t extended = 0; // keys of the extended block
    std::uint8_t reserved = 0;
    std::uint32_t code = 0;
};

static_assert(sizeof(GuardRecord) == 8, "both processes read whole records of eight bytes");

/// X11: which slave pointer is taken from which master. Ids of the server's devices have 16 bits.
constexpr std::uint32_t codeOfPinnedDevice(int device, int master) {
    return static_cast<std::uint32_t>(master) << 16 | (static_cast<std::uint32_t>(device) & 0xFFFF);
}

} // namespace rotika
