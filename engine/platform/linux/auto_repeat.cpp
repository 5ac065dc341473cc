#include "platform/linux/auto_repeat.h"

#include "platform/linux/input_guard.h"

#include <map>
#include <mutex>

namespace rotika {

namespace {

struct DisabledKey {
    int users = 0;
    bool wasEnabled = false; // the state before the first user
};

// Never destroyed: run threads may use it until the process ends.
struct DisabledKeys {
    std::mutex mutex;
    std::map<KeyCode, DisabledKey> byKeycode;
};
DisabledKeys& disabledKeys() {
    static DisabledKeys* const instance = new DisabledKeys;
    return *instance;
}

bool isAutoRepeatOn(Display* display, KeyCode code) {
    XKeyboardState state{};
    XGetKeyboardControl(display, &state);
    return (static_cast<unsigned char>(state.auto_repeats[code / 8]) >> (code % 8) & 1) != 0;
}

void setAutoRepeat(Display* display, KeyCode code, int mode) {
    XKeyboardControl control{};
    control.key = code;
    control.auto_repeat_mode = mode;
    XChangeKeyboardControl(display, KBKey | KBAutoRepeatMode, &control);
}

} // namespace

void disableAutoRepeat(Display* display, KeyCode code) {
    const std::lock_guard lock(disabledKeys().mutex);
    DisabledKey& key = disabledKeys().byKeycode[code];
    if (key.users++ > 0)
        return;
    key.wasEnabled = isAutoRepeatOn(display, code);
    if (!key.wasEnabled)
        return;
    notifyInputGuard(GuardedThing::autoRepeat, true, code);
    setAutoRepeat(display, code, AutoRepeatModeOff);
}

void restoreAutoRepeat(Display* display, KeyCode code) {
    const std::lock_guard lock(disabledKeys().mutex);
    const auto known = disabledKeys().byKeycode.find(code);
    if (known == disabledKeys().byKeycode.end() || --known->second.users > 0)
        return;
    const bool wasEnabled = known->second.wasEnabled;
    disabledKeys().byKeycode.erase(known);
    if (!wasEnabled)
        return;
    setAutoRepeat(display, code, AutoRepeatModeOn);
    XSync(display, 0);
    notifyInputGuard(GuardedThing::autoRepeat, false, code);
}

} // namespace rotika
