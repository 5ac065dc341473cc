#include "platform/linux/raw_keys.h"

#include "platform/linux/connection.h"

#include <array>
#include <vector>

namespace {

std::vector<KeyReleaseHandler> handlers;
unsigned reasons = 0;

bool handleRawRelease(XEvent& event) {
    if (event.type != GenericEvent || event.xcookie.extension != xinputOpcode() ||
        event.xcookie.data == nullptr || event.xcookie.evtype != XI_RawKeyRelease)
        return false;
    const auto& raw = *static_cast<const XIRawEvent*>(event.xcookie.data);
    for (const KeyReleaseHandler handler : handlers)
        handler(static_cast<KeyCode>(raw.detail));
    return true;
}

void selectRawReleases(bool isOn) {
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    if (isOn)
        XISetMask(bits, XI_RawKeyRelease);
    XIEventMask mask{XIAllMasterDevices, sizeof bits, bits};
    XISelectEvents(ownerDisplay(), rootWindow(), &mask, 1);
    XFlush(ownerDisplay());
}

} // namespace

void addKeyReleaseHandler(KeyReleaseHandler handler) {
    if (handlers.empty())
        addEventHandler(handleRawRelease);
    handlers.push_back(handler);
}

void listenToKeyReleases(ListeningReason reason, bool isOn) {
    const auto bit = static_cast<unsigned>(reason);
    const unsigned before = reasons;
    reasons = isOn ? reasons | bit : reasons & ~bit;
    if ((before == 0) != (reasons == 0))
        selectRawReleases(reasons != 0);
}

bool isKeyDown(KeyCode code) {
    std::array<char, 32> down{};
    XQueryKeymap(ownerDisplay(), down.data());
    return (static_cast<unsigned char>(down[code / 8]) >> (code % 8) & 1) != 0;
}
