#pragma once

#include "base/window_handle.h"

namespace rotika {

// Owner thread.

/// The window that has the keyboard; null when none has.
WindowHandle foregroundWindow();
bool windowExists(WindowHandle window);

/// Gives `window` the keyboard, past the system's lock against focus theft where it has one.
void bringToForeground(WindowHandle window);

} // namespace rotika
