#pragma once

#include "platform/windows/windows_api.h"

#include <cstdint>

namespace rotika {

// The hot keys' other side: the modifiers that functions hold down. While they do, the person's press of a
// hot key comes with these modifiers, and the system takes a hot key only with exactly the modifiers that it
// was registered with.

/// A key was injected; others than modifiers do not matter. Any thread.
void noteInjectedKey(std::uint16_t virtualKey, bool down);

/// Posted to the main window, whose thread alone may register hot keys, when such a modifier has changed.
inline constexpr UINT heldModifiersMessage = WM_USER + 1;
/// Its share there. Owner thread.
void followHeldModifiers() noexcept;

/// What the engine calls the hot key of a WM_HOTKEY. Owner thread.
int registeredHotKeyId(WPARAM wParam) noexcept;

} // namespace rotika
