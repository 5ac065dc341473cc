#pragma once

#include "platform/linux/x11.h"

namespace rotika {

// The server's auto-repeat, disabled for keys that the program holds down. The guard restores it if the
// process dies. Counted, since two virtual keys may share a keycode. Any thread, on its own connection.

void disableAutoRepeat(Display* display, KeyCode code);
void restoreAutoRepeat(Display* display, KeyCode code);

} // namespace rotika
