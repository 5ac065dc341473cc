#pragma once

/// Who hears of presses of registered hot keys. Owner thread.
void setHotKeyHandler(void (*handler)(int id) noexcept);
