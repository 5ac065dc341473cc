#include "platform/linux/raw_keys.h"

#include "platform/linux/connection.h"

#include <array>
#include <vector>

namespace {

std::vector<RawKeyHandler> handlers;
unsigned reasons = 0;

bool handleRawKey(XEvent& event) {
    if (event.type != GenericEvent || event.xcookie.extension != xinputOpcode() ||
        event.xcookie.data == nullptr ||
        (event.xcookie.evtype != XI_RawKeyPress && event.xcookie.evtype != XI_RawKeyRelease))
        return false;
    const auto& raw = *static_cast<const XIRawEvent*>(event.xcookie.data);
    for (const RawKeyHandler handler : handlers)
        handler(static_cast<KeyCode>(raw.detail), raw.sourceid, raw.evtype == XI_RawKeyPress);
    return true;
}

void selectRawKeys(bool isOn) {
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    if (isOn) {
        XISetMask(bits, XI_RawKeyPress);
        XISetMask(bits, XI_RawKeyRelease);
    }
    XIEventMask mask{XIAllMasterDevices, sizeof bits, bits};
    XISelectEvents(ownerDisplay(), rootWindow(), &mask, 1);
    XFlush(ownerDisplay());
}

} // namespace

void addRawKeyHandler(RawKeyHandler handler) {
    if (handlers.empty())
        addEventHandler(handleRawKey);
    handlers.push_back(handler);
}

void listenToRawKeys(ListeningReason reason, bool isOn) {
    const auto bit = static_cast<unsigned>(reason);
    const unsigned before = reasons;
    reasons = isOn ? reasons | bit : reasons & ~bit;
    if ((before == 0) != (reasons == 0))
        selectRawKeys(reasons != 0);
}

bool isKeyDown(KeyCode code) {
    std::array<char, 32> down{};
    XQueryKeymap(ownerDisplay(), down.data());
    return (static_cast<unsigned char>(down[code / 8]) >> (code % 8) & 1) != 0;
}
