#pragma once

/// Who hears of presses of registered hot keys. Owner thread.
void setHotKeyHandler(void (*handler)(int id) noexcept);

/// While a hot key is held the server gives the whole keyboard to us, and keys that a function presses would
/// come here too. Called when the wheel closes: gives the keyboard back, unless it is the key's own press
/// that closes it. The program in front then sees a release of the key without its press, which means nothing
/// to it. Owner thread.
void letGoOfHeldHotKey();
