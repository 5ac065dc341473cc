#include "platform/injection.h"

#include "platform/linux/auto_repeat.h"
#include "platform/linux/connection.h"
#include "platform/linux/glib_handles.h"
#include "platform/linux/held_keys.h"
#include "platform/linux/hot_key_events.h"
#include "platform/linux/injection_connection.h"
#include "platform/linux/input_guard.h"
#include "platform/linux/key_positions.h"
#include "platform/linux/raw_keys.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <thread>
#include <utility>
#include <vector>

namespace rotika {

namespace {

struct Injection {
    std::mutex mutex;
    Display* display = nullptr;
};

struct HeldKey {
    KeyCode code = 0;
    bool isLeftDown = false; // by a function that has ended
};

// Pressed by us and not yet released. What was pressed is what will be released, whatever the layout is then.
// The mutex is held for moments only, since the owner thread takes it too.
struct HeldKeys {
    std::mutex mutex;
    std::map<std::uint16_t, HeldKey> byVirtualKey;
};

// Run threads may inject to the very end of the process, so this is never destroyed.
Injection& injection() {
    static Injection* const instance = new Injection;
    return *instance;
}

HeldKeys& heldKeys() {
    static HeldKeys* const instance = new HeldKeys;
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

KeyCode keycodeFor(Display* display, std::uint16_t virtualKey) {
    {
        const std::lock_guard lock(heldKeys().mutex);
        const auto held = heldKeys().byVirtualKey.find(virtualKey);
        if (held != heldKeys().byVirtualKey.end())
            return held->second.code;
    }
    followKeyboardChanges(display);
    const KeyCode code = keycodeOfVirtualKey(display, virtualKey);
    return code != 0 ? code : borrowKeycode(display, virtualKey);
}

bool noteHeld(std::uint16_t virtualKey, const HeldKey& key) {
    const std::lock_guard lock(heldKeys().mutex);
    HeldKey& noted = heldKeys().byVirtualKey[virtualKey];
    const bool isNew = noted.code == 0;
    noted = key;
    return isNew;
}

/// The key's former entry; code 0 if it was not held.
HeldKey forgetHeld(std::uint16_t virtualKey) {
    const std::lock_guard lock(heldKeys().mutex);
    const auto entry = heldKeys().byVirtualKey.extract(virtualKey);
    return entry ? entry.mapped() : HeldKey{};
}

void pressKey(Display* display, std::uint16_t virtualKey, KeyCode code, InputMotion motion) {
    // XTest's own keyboard may still have it down, left by a program that has died and undone by the person
    // since then; the server would drop the press.
    if (!isKeyDown(display, code))
        XTestFakeKeyEvent(display, code, 0, CurrentTime);
    XSync(display, 0);
    // A key held by XTest would repeat, and go on repeating after we have died: unlike on Windows, where an
    // injected press is one press.
    if (noteHeld(virtualKey, {code, false}))
        silenceAutoRepeat(display, code);
    tellInputGuard(GuardedThing::key, motion == InputMotion::downUntilReleased, code);
    XTestFakeKeyEvent(display, code, 1, CurrentTime);
    XSync(display, 0);
    // Only now: one that is not down yet would pass for one that the person has tapped.
    if (motion == InputMotion::downPersistent)
        noteHeld(virtualKey, {code, true});
}

/// Whether a function had left it down.
bool releaseKey(Display* display, std::uint16_t virtualKey, KeyCode code) {
    XTestFakeKeyEvent(display, code, 0, CurrentTime);
    XSync(display, 0);
    tellInputGuard(GuardedThing::key, false, code);
    const HeldKey held = forgetHeld(virtualKey);
    if (held.code != 0)
        restoreAutoRepeat(display, code);
    return held.isLeftDown;
}

std::vector<std::pair<std::uint16_t, HeldKey>> keysLeftDown() {
    const std::lock_guard lock(heldKeys().mutex);
    std::vector<std::pair<std::uint16_t, HeldKey>> left;
    for (const auto& entry : heldKeys().byVirtualKey)
        if (entry.second.isLeftDown)
            left.emplace_back(entry);
    return left;
}

bool handleRawKey(XEvent& event);

/// What the owner thread does about the keys that are held now.
gboolean followHeldKeys(gpointer) {
    static const bool isListening = (addEventHandler(handleRawKey), true);
    (void)isListening;
    selectRawKeys(ownerDisplay(), !keysLeftDown().empty());
    for (const auto& [virtualKey, key] : keysLeftDown())
        if (!isKeyDown(ownerDisplay(), key.code)) // tapped before anybody listened
            releaseKey(ownerDisplay(), virtualKey, key.code);
    selectRawKeys(ownerDisplay(), !keysLeftDown().empty()); // perhaps no more
    followHeldModifiers();
    return G_SOURCE_REMOVE;
}

void tellOwnerOfHeldKeys() {
    callOwnerSoon(followHeldKeys, nullptr);
}

/// The person has tapped a key that a function left down: for the programs it is released now, so it is let
/// go of. A release of our own, before the press, is no tap: the key is down by the time it counts as left.
bool handleRawKey(XEvent& event) {
    const auto raw = rawKeyOf(event);
    if (!raw)
        return false;
    for (const auto& [virtualKey, key] : keysLeftDown()) {
        if (key.code != raw->code || raw->isPress || isKeyDown(ownerDisplay(), key.code))
            continue;
        releaseKey(ownerDisplay(), virtualKey, key.code);
        tellOwnerOfHeldKeys();
    }
    return true;
}

bool isModifier(std::uint16_t virtualKey) {
    constexpr std::uint16_t modifiers[] = {0x10, 0x11, 0x12, 0x5B}; // shift, ctrl, alt, win
    return std::ranges::find(modifiers, virtualKey) != std::end(modifiers);
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
    const KeyCode code = keycodeFor(display, virtualKey);
    if (code == 0)
        return;
    bool isLeftDown = motion == InputMotion::downPersistent;
    if (motion == InputMotion::up)
        isLeftDown = releaseKey(display, virtualKey, code);
    else
        pressKey(display, virtualKey, code, motion);
    if (isLeftDown || isModifier(virtualKey))
        tellOwnerOfHeldKeys();
}

std::vector<KeyCode> heldKeycodes() {
    const std::lock_guard lock(heldKeys().mutex);
    std::vector<KeyCode> codes;
    for (const auto& [virtualKey, key] : heldKeys().byVirtualKey)
        codes.push_back(key.code);
    return codes;
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

} // namespace rotika
