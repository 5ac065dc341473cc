#include "platform/injection.h"

#include "platform/linux/auto_repeat.h"
#include "platform/linux/connection.h"
#include "platform/linux/held_keys.h"
#include "platform/linux/hot_key.h"
#include "platform/linux/injection_connection.h"
#include "platform/linux/input_guard.h"
#include "platform/linux/key_positions.h"
#include "platform/linux/owner_loop.h"
#include "platform/linux/raw_keys.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

namespace rotika {

namespace {

/// Other clients may change the keyboard map at any time; Xlib updates its copy only when the events are
/// read.
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

/// Maps a key that the layout lacks (F13 and above) to an unused keycode. The mapping stays until the process
/// ends, when the guard removes it.
KeyCode mapToUnusedKeycode(Display* display, std::uint16_t virtualKey) {
    KeySym keysym = keysymOfVirtualKey(virtualKey);
    const KeyCode code = keysym == NoSymbol ? KeyCode{0} : unusedKeycode(display);
    if (code == 0)
        return 0;
    notifyInputGuard(GuardedThing::temporaryKeycode, true, code);
    XChangeKeyboardMapping(display, code, 1, &keysym, 1);
    XSync(display, 0);
    // Programs read the new map only after its notification; they would ignore a press that comes earlier.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    return code;
}

KeyCode keycodeFor(Display* display, std::uint16_t virtualKey) {
    KeyCode code = heldKeycode(virtualKey);
    if (code != 0)
        return code;
    followKeyboardChanges(display);
    code = keycodeOfVirtualKey(display, virtualKey);
    return code != 0 ? code : mapToUnusedKeycode(display, virtualKey);
}

void pressKey(Display* display, std::uint16_t virtualKey, KeyCode code, InputMotion motion) {
    // The key may still be down on XTest's own keyboard, left by a program that has died, though the user has
    // tapped it since; the server would ignore the press.
    if (!isKeyDown(display, code))
        XTestFakeKeyEvent(display, code, 0, CurrentTime);
    XSync(display, 0);
    // Unlike on Windows, a key held by XTest would repeat, even after the end of this process.
    if (noteHeld(virtualKey, {code, false}))
        disableAutoRepeat(display, code);
    notifyInputGuard(GuardedThing::key, motion == InputMotion::downUntilReleased, code);
    XTestFakeKeyEvent(display, code, 1, CurrentTime);
    XSync(display, 0);
    // Only now: a key that is not down yet would count as tapped by the user.
    if (motion == InputMotion::downPersistent)
        noteHeld(virtualKey, {code, true});
}

/// True if a function had left it down.
bool releaseKey(Display* display, std::uint16_t virtualKey, KeyCode code) {
    XTestFakeKeyEvent(display, code, 0, CurrentTime);
    XSync(display, 0);
    notifyInputGuard(GuardedThing::key, false, code);
    const HeldKey held = removeHeld(virtualKey);
    if (held.code != 0)
        restoreAutoRepeat(display, code);
    return held.isLeftDown;
}

bool handleRawKey(XEvent& event);

/// Updates the owner thread's event selection and hot keys after the held keys have changed.
gboolean followHeldKeys(gpointer) {
    addEventHandler(handleRawKey);
    selectRawKeys(ownerDisplay(), !keysLeftDown().empty());
    for (const auto& [virtualKey, key] : keysLeftDown())
        if (!isKeyDown(ownerDisplay(), key.code)) // tapped before the events were selected
            releaseKey(ownerDisplay(), virtualKey, key.code);
    selectRawKeys(ownerDisplay(), !keysLeftDown().empty()); // none may be left
    followHeldModifiers();
    return G_SOURCE_REMOVE;
}

void notifyOwnerOfHeldKeys() {
    callOwnerSoon(followHeldKeys, nullptr);
}

/// When the user taps a key that a function left down, programs see it released, so it is released here too.
/// This process's own release before a press does not count: the key is down again before it counts as left
/// down.
bool handleRawKey(XEvent& event) {
    const auto raw = rawKeyOf(event);
    if (!raw)
        return false;
    for (const auto& [virtualKey, key] : keysLeftDown()) {
        if (key.code != raw->code || raw->isPress || isKeyDown(ownerDisplay(), key.code))
            continue;
        releaseKey(ownerDisplay(), virtualKey, key.code);
        notifyOwnerOfHeldKeys();
    }
    return true;
}

bool isModifier(std::uint16_t virtualKey) {
    constexpr std::uint16_t modifiers[] = {0x10, 0x11, 0x12, 0x5B}; // shift, ctrl, alt, win
    return std::ranges::find(modifiers, virtualKey) != std::end(modifiers);
}

} // namespace

void injectKey(std::uint16_t virtualKey, bool /*extended: part of the keycode*/, InputMotion motion) {
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
        notifyOwnerOfHeldKeys();
}

void injectMouseButton(std::uint32_t button, InputMotion motion) {
    constexpr unsigned int xButtons[] = {1, 3, 2, 8, 9}; // 4 to 7 are the scroll wheel
    const InjectionConnection connection = lockInjectionConnection();
    if (connection.display == nullptr || button >= std::size(xButtons))
        return;
    const bool isPress = motion != InputMotion::up;
    if (motion == InputMotion::downUntilReleased)
        notifyInputGuard(GuardedThing::button, true, xButtons[button]);
    XTestFakeButtonEvent(connection.display, xButtons[button], isPress ? 1 : 0, CurrentTime);
    XSync(connection.display, 0);
    if (!isPress)
        notifyInputGuard(GuardedThing::button, false, xButtons[button]);
}

} // namespace rotika
