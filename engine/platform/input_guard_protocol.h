#pragma once

#include <cstdint>

namespace rotika {

// Protocol between the program and the guard process: one record per change through a pipe. End of file means
// that the program has died for any reason; the guard then releases everything still recorded as down. While
// a pointer is pinned the program sends heartbeats; captureSilenceLimitMs after the last one the guard
// releases the mouse, since a program that hangs cannot.

enum class GuardedThing : std::uint8_t {
    key = 0,              // code: virtual key on Windows, keycode on X11
    button = 1,           // code: device button, 0 to 4 as the engine counts on Windows, the X button on X11
    pointerPin = 2,       // Windows: the cursor is held in place, code is 0; X11: codeOfPinnedDevice
    autoRepeat = 3,       // X11: this keycode's auto-repeat is switched off
    temporaryKeycode = 4, // X11: this keycode, normally unused, is mapped to a key that the layout lacks
    heartbeat = 5,        // the thread that pins the pointer is alive; `down` is unused
    heldButton = 6,       // X11: this X button was down on a mouse when the mouse was pinned
};

struct GuardRecord {
    GuardedThing kind = GuardedThing::key;
    std::uint8_t down = 0;     // set to 1 before the press, to 0 after the release
    std::uint8_t extended = 0; // key of the extended block
    std::uint8_t reserved = 0;
    std::uint32_t code = 0;
};

static_assert(sizeof(GuardRecord) == 8, "both processes read whole records of eight bytes");

/// X11: the slave pointer that was detached, and its master. Device ids have 16 bits.
constexpr std::uint32_t codeOfPinnedDevice(int device, int master) {
    return static_cast<std::uint32_t>(master) << 16 | (static_cast<std::uint32_t>(device) & 0xFFFF);
}

} // namespace rotika
