#pragma once

#include "platform/linux/x11.h"

#include <optional>

namespace rotika {

// Raw presses and releases of all keyboards, regardless of focus and grabs, without auto-repeats. Selected
// only while needed, so that the user's typing is not read otherwise. Each on its own connection.

struct RawKey {
    KeyCode code = 0;
    int device = 0; // the slave that sent it
    bool isPress = false;
};

void selectRawKeys(Display* display, bool isOn);

/// Nullopt for any other event. The event's data must have been fetched.
std::optional<RawKey> rawKeyOf(const XEvent& event);

/// Whether the key is down now, according to the server.
bool isKeyDown(Display* display, KeyCode code);

} // namespace rotika
