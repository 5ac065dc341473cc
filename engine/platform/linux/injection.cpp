#include "platform/injection.h"

#include "platform/linux/auto_repeat.h"
#include "platform/linux/injection_connection.h"
#include "platform/linux/input_guard.h"
#include "platform/linux/key_positions.h"

#include <chrono>
#include <set>
#include <thread>

namespace {

struct Injection {
    std::mutex mutex;
    Display* display = nullptr;
    std::set<KeyCode> held; // pressed by us and not yet released
};

// Run threads may inject to the very end of the process, so this is never destroyed.
Injection& injection() {
    static Injection* const instance = new Injection;
    return *instance;
}

/// Other clients change the keyboard map at any time; Xlib's copy follows only if somebody reads the events.
void followKeyboardChanges(Display* display) {
    while (XEventsQueued(display, QueuedAfterReading) > 0) {
        XEvent event;
        XNextEvent(display, &event);
        if (event.type == MappingNotify)
            XRefreshKeyboardMapping(&event.xmapping);
    }
}

KeyCode unusedKeycode(Display* display) {
    int first = 0;
    int last = 0;
    XDisplayKeycodes(display, &first, &last);
    int perKeycode = 0;
    const XOwned<KeySym> map(
        XGetKeyboardMapping(display, static_cast<KeyCode>(first), last - first + 1, &perKeycode));
    for (int code = last; map != nullptr && code >= first; --code) {
        bool isUnused = true;
        for (int i = 0; i < perKeycode; ++i)
            isUnused &= map.get()[(code - first) * perKeycode + i] == NoSymbol;
        if (isUnused)
            return static_cast<KeyCode>(code);
    }
    return 0;
}

/// Puts a key that the layout lacks (F13 and above) on an unused keycode. It stays there to the end of the
/// process, when the guard takes it back.
KeyCode borrowKeycode(Display* display, std::uint16_t virtualKey) {
    KeySym keysym = keysymOfVirtualKey(virtualKey);
    const KeyCode code = keysym == NoSymbol ? KeyCode{0} : unusedKeycode(display);
    if (code == 0)
        return 0;
    tellInputGuard(GuardedThing::borrowedKeycode, true, code);
    XChangeKeyboardMapping(display, code, 1, &keysym, 1);
    XSync(display, 0);
    // Programs read the new map only after they have been told of it; a press before would reach them as
    // nothing.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    return code;
}

} // namespace

InjectionConnection lockInjectionConnection() {
    Injection& shared = injection();
    InjectionConnection connection{std::unique_lock(shared.mutex), nullptr};
    if (shared.display == nullptr) {
        shared.display = XOpenDisplay(nullptr);
        if (shared.display != nullptr)
            XTestGrabControl(shared.display,
                             1); // a client that has grabbed the server must not stop a release
    }
    connection.display = shared.display;
    return connection;
}

void injectKey(std::uint16_t virtualKey, bool /*extended: a keycode says it already*/, InputMotion motion) {
    const InjectionConnection connection = lockInjectionConnection();
    Display* display = connection.display;
    if (display == nullptr)
        return;
    followKeyboardChanges(display);
    KeyCode code = keycodeOfVirtualKey(display, virtualKey);
    if (code == 0)
        code = borrowKeycode(display, virtualKey);
    if (code == 0)
        return;
    const bool isPress = motion != InputMotion::up;
    // A key held by XTest would repeat, and go on repeating after we have died: unlike on Windows, where an
    // injected press is one press.
    if (isPress && injection().held.insert(code).second)
        silenceAutoRepeat(display, code);
    if (motion == InputMotion::downUntilReleased)
        tellInputGuard(GuardedThing::key, true, code);
    XTestFakeKeyEvent(display, code, isPress ? 1 : 0, CurrentTime);
    XSync(display, 0);
    if (isPress)
        return;
    tellInputGuard(GuardedThing::key, false, code);
    if (injection().held.erase(code) > 0)
        restoreAutoRepeat(display, code);
}

void injectMouseButton(std::uint32_t button, InputMotion motion) {
    constexpr unsigned int xButtons[] = {1, 3, 2, 8, 9}; // 4 to 7 are the scroll wheel's
    const InjectionConnection connection = lockInjectionConnection();
    if (connection.display == nullptr || button >= std::size(xButtons))
        return;
    const bool isPress = motion != InputMotion::up;
    if (motion == InputMotion::downUntilReleased)
        tellInputGuard(GuardedThing::button, true, xButtons[button]);
    XTestFakeButtonEvent(connection.display, xButtons[button], isPress ? 1 : 0, CurrentTime);
    XSync(connection.display, 0);
    if (!isPress)
        tellInputGuard(GuardedThing::button, false, xButtons[button]);
}
