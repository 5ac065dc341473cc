#pragma once

#include "platform/linux/x11.h"

#include <optional>

namespace rotika {

// Raw presses and releases of all keyboards, whoever has the focus or a grab; auto-repeats are not among
// them. They are asked for only while they are needed, so that people's typing is not listened to otherwise.
// Each on its own connection.

struct RawKey {
    KeyCode code = 0;
    int device = 0; // the slave that sent it
    bool isPress = false;
};

void selectRawKeys(Display* display, bool isOn);

/// Empty for any other event. The event's data has been fetched.
std::optional<RawKey> rawKeyOf(const XEvent& event);

/// Whether the key is down now, as the server sees it.
bool isKeyDown(Display* display, KeyCode code);

} // namespace rotika
