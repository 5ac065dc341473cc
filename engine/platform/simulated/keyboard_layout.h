#pragma once

#include <cstdint>

namespace rotika {

// Owner thread.

/// Sets the result of virtualKeyOfCharacter() for a character; noVirtualKey removes the character. The
/// initial layout is the Polish programmer's.
void setSimulatedLayoutKey(char16_t character, std::uint16_t keyAndShift);

void resetSimulatedLayout();

} // namespace rotika
