#pragma once

#include "base/window_handle.h"

namespace rotika {

// Owner thread.

/// The window with the keyboard focus; null when there is none.
WindowHandle foregroundWindow();
bool windowExists(WindowHandle window);

/// Gives `window` the keyboard focus, bypassing the system's focus-stealing prevention where it has one.
void bringToForeground(WindowHandle window);

} // namespace rotika
