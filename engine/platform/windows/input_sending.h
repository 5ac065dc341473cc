#pragma once

#include <cstdint>

// One injected event each; shared by the program and its guard. Failures are silent. Any thread.

void sendKeyEvent(std::uint16_t virtualKey, bool extended, bool down);

/// Device button 0 to 4, before any swap; others are ignored.
void sendButtonEvent(std::uint32_t button, bool down);
