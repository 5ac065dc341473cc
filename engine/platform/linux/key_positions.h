#pragma once

#include "platform/linux/x11.h"

#include <cstdint>

// Win32 virtual keys on the X keyboard. Letters follow the layout; digits and punctuation are positions on
// the keyboard, as their virtual keys are on Windows; all other keys go by keysym. Any thread, on its own
// connection.

/// The keycode that `virtualKey` has on the active layout, 0 if none.
KeyCode keycodeOfVirtualKey(Display* display, std::uint16_t virtualKey);

/// The keysym of a key that no position stands for, NoSymbol for an unknown virtual key.
KeySym keysymOfVirtualKey(std::uint16_t virtualKey);

/// The virtual key of a keycode on the active layout, 0 if it has none.
std::uint16_t virtualKeyOfKeycode(Display* display, KeyCode keycode);
