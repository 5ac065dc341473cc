#include "platform/linux/auto_repeat.h"

#include "platform/linux/input_guard.h"

#include <map>
#include <mutex>

namespace rotika {

namespace {

struct Silence {
    int users = 0;
    bool didRepeat = false; // before the first user
};

// Run threads may come here to the very end of the process, so this is never destroyed.
struct Silences {
    std::mutex mutex;
    std::map<KeyCode, Silence> byKeycode;
};
Silences& silences() {
    static Silences* const instance = new Silences;
    return *instance;
}

bool repeats(Display* display, KeyCode code) {
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

void silenceAutoRepeat(Display* display, KeyCode code) {
    const std::lock_guard lock(silences().mutex);
    Silence& silence = silences().byKeycode[code];
    if (silence.users++ > 0)
        return;
    silence.didRepeat = repeats(display, code);
    if (!silence.didRepeat)
        return;
    tellInputGuard(GuardedThing::autoRepeat, true, code);
    setAutoRepeat(display, code, AutoRepeatModeOff);
}

void restoreAutoRepeat(Display* display, KeyCode code) {
    const std::lock_guard lock(silences().mutex);
    const auto known = silences().byKeycode.find(code);
    if (known == silences().byKeycode.end() || --known->second.users > 0)
        return;
    const bool didRepeat = known->second.didRepeat;
    silences().byKeycode.erase(known);
    if (!didRepeat)
        return;
    setAutoRepeat(display, code, AutoRepeatModeOn);
    XSync(display, 0);
    tellInputGuard(GuardedThing::autoRepeat, false, code);
}

} // namespace rotika
