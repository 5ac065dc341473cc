#pragma once

#include "platform/linux/x11.h"

#include <cstdint>

namespace rotika {

// Win32 virtual keys on the X keyboard. Letters follow the layout; digits and punctuation are positions on
// the keyboard, as their virtual keys are on Windows; all other keys go by keysym. Where a layout puts a
// letter on a punctuation position (M on French keyboards), the punctuation takes the position where the
// American keyboard has that letter. Any thread, on its own connection.

/// The keycode that `virtualKey` has on the active layout, 0 if none.
KeyCode keycodeOfVirtualKey(Display* display, std::uint16_t virtualKey);

/// The keycode whose press by the user counts as `virtualKey`, 0 if none. It differs from the above for F13
/// to F24: pedals and macro pads send these keys, though layouts put other keysyms on them.
KeyCode keycodeOfHotKey(Display* display, std::uint16_t virtualKey);

/// The keysym of a virtual key that is not defined by its position; NoSymbol for any other.
KeySym keysymOfVirtualKey(std::uint16_t virtualKey);

/// The virtual key of a keycode on the active layout, 0 if it has none.
std::uint16_t virtualKeyOfKeycode(Display* display, KeyCode keycode);

/// The index of the active layout among those that the keyboard has.
int activeGroup(Display* display);

/// NoSymbol if the key has none at this level. A key that lacks the group has its first group instead.
KeySym keysymAt(Display* display, KeyCode code, int group, int level);

} // namespace rotika
