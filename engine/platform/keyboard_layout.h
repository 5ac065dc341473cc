#pragma once

#include <cstdint>

namespace rotika {

/// Result of virtualKeyOfCharacter for a character that the layout cannot type.
inline constexpr std::uint16_t noVirtualKey = 0xFFFF;

/// Low byte: the Win32 virtual-key code of the key that types `character` on the active layout; high byte:
/// the shift state it needs. Owner thread.
std::uint16_t virtualKeyOfCharacter(char16_t character);

} // namespace rotika
