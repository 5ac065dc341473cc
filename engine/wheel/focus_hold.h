#pragma once

#include "model/wheel_records.h"

#include <cstdint>

namespace rotika {

// With `takeFocus`, a key that was pressed on the wheel may still be down when the wheel closes by another
// road. Its auto-repeats would reach the program that gets the focus back. The closed wheel's window then
// keeps the focus, without a pixel to be seen or clicked, until the key is up, for a second at most. Owner
// thread.

/// Instead of hiding the wheel's window; false if no such key is down.
bool startFocusHold();

/// Hides the window and gives the focus back, unless the user has taken it elsewhere, then starts the
/// functions that wait for it. No effect without a hold.
void endFocusHold() noexcept;

/// Gives the focus back to the program that had it when the wheel was opened.
void giveFocusBack();

/// runFunction(), if need be after the hold.
void runWithFocusBack(const WheelAction& action, std::uint32_t initialDelay);

} // namespace rotika
