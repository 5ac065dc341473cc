#pragma once

#include "platform/windows/windows_api.h"

#include <cstdint>

namespace rotika {

// Modifiers that functions hold down. Meanwhile the user's press of a hot key comes with these modifiers, and
// the system recognises a hot key only with exactly the modifiers that it was registered with.

/// Records an injected key; keys that are not modifiers are ignored. Any thread.
void noteInjectedKey(std::uint16_t virtualKey, bool down);

/// Posted to the main window when such a modifier has changed: only its thread may register hot keys.
inline constexpr UINT heldModifiersMessage = WM_USER + 1;
/// Handles heldModifiersMessage. Owner thread.
void followHeldModifiers() noexcept;

/// The engine's id of the hot key of a WM_HOTKEY. Owner thread.
int registeredHotKeyId(WPARAM wParam) noexcept;

} // namespace rotika
