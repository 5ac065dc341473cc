#pragma once

#include <cstdint>

namespace rotika {

// Input for other programs, which cannot tell it from a device's. Failures are silent. Any thread.

enum class InputMotion {
    up,
    /// The sender will release it: should the process die before, the system's guard does it.
    downUntilReleased,
    /// Stays down after the sender has ended, on purpose.
    downAndLeft,
};

/// `virtualKey` is a Win32 virtual-key code; `extended` marks the keys of the extended block.
void injectKey(std::uint16_t virtualKey, bool extended, InputMotion motion);

/// 0 left, 1 right, 2 middle, 3 and 4 the side buttons: of the device, before any swap. Where the cursor is.
void injectMouseButton(std::uint32_t button, InputMotion motion);

} // namespace rotika
