#pragma once

#include "platform/linux/x11.h"

namespace rotika {

// A key that repeats by itself: switched off for keys that we hold down. The guard switches it on again
// should the process die. Counted, since two virtual keys may be one keycode. Any thread, on its own
// connection.

void silenceAutoRepeat(Display* display, KeyCode code);
void restoreAutoRepeat(Display* display, KeyCode code);

} // namespace rotika
