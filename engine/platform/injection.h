#pragma once

#include <cstdint>

namespace rotika {

// Input for other programs, equivalent to input of a device. Failures are silent. Any thread.

enum class InputMotion {
    up,
    /// The sender will release it; if the process dies first, the guard process does.
    downUntilReleased,
    /// Intentionally stays down after the sender has ended.
    downPersistent,
};

/// `virtualKey` is a Win32 virtual-key code; `extended` marks the keys of the extended block.
void injectKey(std::uint16_t virtualKey, bool extended, InputMotion motion);

/// 0 left, 1 right, 2 middle, 3 and 4 the side buttons: physical buttons, before any swap. At the cursor
/// position.
void injectMouseButton(std::uint32_t button, InputMotion motion);

} // namespace rotika
