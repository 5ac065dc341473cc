#pragma once

#include "base/window_handle.h"

#include <cstdint>

namespace rotika {

/// Registers one key without modifiers (in every Caps/Num/Scroll Lock state) for the whole desktop, so that
/// no program receives it; each press, without auto-repeats, calls hotKeyPressed(id) of `mainWindow`. False
/// when another program has the key or the keyboard has no such key. Owner thread.
bool registerHotKey(WindowHandle mainWindow, int id, std::uint16_t virtualKey);
void unregisterHotKey(WindowHandle mainWindow, int id);

} // namespace rotika
