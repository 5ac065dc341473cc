#pragma once

#include "platform/overlay_window.h"

#include <cstdint>

namespace rotika {

// The fields of an open wheel by keyboard, if `takeFocus` has given it the keyboard. Owner thread.
// Arrow keys move the virtual cursor round the ring and the page keys turn at once. A key that selects or
// closes acts when it is released: while it is held the wheel keeps the focus, so its auto-repeats do not
// reach the program that gets the focus back, and the function does not run beside a key that is down.

void handleWheelKey(std::uint16_t virtualKey, KeyChange change) noexcept;

/// A release now does nothing: the key may have been released and pressed again in another window.
void forgetHeldWheelKey() noexcept;

} // namespace rotika
