#pragma once

#include "base/window_handle.h"

#include <cstdint>

namespace rotika {

/// Takes one bare key of the whole desktop, with no modifier (the lock keys do not count), so that no program
/// sees it; each press, but not its repeats, calls hotKeyPressed(id) of `mainWindow`. False when another
/// program holds the key or the keyboard has none for it. Owner thread.
bool registerHotKey(WindowHandle mainWindow, int id, std::uint16_t virtualKey);
void unregisterHotKey(WindowHandle mainWindow, int id);

} // namespace rotika
