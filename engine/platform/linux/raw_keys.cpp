#include "platform/linux/raw_keys.h"

#include "platform/linux/connection.h"

#include <array>

namespace rotika {

void selectRawKeys(Display* display, bool isOn) {
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    if (isOn) {
        XISetMask(bits, XI_RawKeyPress);
        XISetMask(bits, XI_RawKeyRelease);
    }
    XIEventMask mask{XIAllMasterDevices, sizeof bits, bits};
    XISelectEvents(display, DefaultRootWindow(display), &mask, 1);
}

std::optional<RawKey> rawKeyOf(const XEvent& event) {
    if (event.type != GenericEvent || event.xcookie.extension != xinputOpcode() ||
        event.xcookie.data == nullptr ||
        (event.xcookie.evtype != XI_RawKeyPress && event.xcookie.evtype != XI_RawKeyRelease))
        return std::nullopt;
    const auto& raw = *static_cast<const XIRawEvent*>(event.xcookie.data);
    return RawKey{static_cast<KeyCode>(raw.detail), raw.sourceid, raw.evtype == XI_RawKeyPress};
}

bool isKeyDown(Display* display, KeyCode code) {
    std::array<char, 32> down{};
    XQueryKeymap(display, down.data());
    return (static_cast<unsigned char>(down[code / 8]) >> (code % 8) & 1) != 0;
}

} // namespace rotika
