#pragma once

namespace rotika {

/// Sets the handler for presses of registered hot keys. Owner thread.
void setHotKeyHandler(void (*handler)(int id) noexcept);

/// Updates the grabs to heldKeycodes(): a hot key must work while this program holds a modifier down, but
/// not with a modifier that the user holds. Owner thread.
void followHeldModifiers();

} // namespace rotika
