#pragma once

namespace rotika {

/// Who hears of presses of registered hot keys. Owner thread.
void setHotKeyHandler(void (*handler)(int id) noexcept);

/// Follows heldKeycodes(): a hot key must work while the program itself holds a modifier down, and a
/// modifier that the person holds must not make it one. Owner thread.
void followHeldModifiers();

} // namespace rotika
