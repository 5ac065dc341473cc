#include "platform/hot_key.h"

#include "platform/linux/connection.h"
#include "platform/linux/held_keys.h"
#include "platform/linux/hot_key_events.h"
#include "platform/linux/key_positions.h"
#include "platform/linux/raw_keys.h"

#include <algorithm>
#include <set>
#include <vector>

namespace {

struct HotKey {
    int id = 0;
    std::uint16_t virtualKey = 0;
    KeyCode keycode = 0;
    bool hasFired = false; // for the press under way: what comes now are its repeats
    std::set<int> holders; // devices that have it down
};

constexpr int unknownDevice = -1; // its raw press came before anybody listened

std::vector<HotKey> hotKeys;
unsigned int heldModifiers = 0; // those that the program itself holds down
void (*pressHandler)(int id) noexcept = nullptr;

/// The modifier bit that a key has on this keyboard, 0 if none.
unsigned int modifierOf(KeyCode code) {
    XModifierKeymap* map = XGetModifierMapping(ownerDisplay());
    unsigned int found = 0;
    for (int i = 0; code != 0 && map != nullptr && i < 8 * map->max_keypermod; ++i)
        if (map->modifiermap[i] == code)
            found = 1U << (i / map->max_keypermod);
    if (map != nullptr)
        XFreeModifiermap(map);
    return found;
}

/// Every combination of the lock keys: the toggle key works in every Caps, Num and Scroll Lock state.
std::vector<unsigned int> lockCombinations() {
    const auto modifierOfKeysym = [](KeySym lockKey) {
        return modifierOf(XKeysymToKeycode(ownerDisplay(), lockKey));
    };
    std::vector<unsigned int> combinations{0};
    for (const unsigned int lock :
         {unsigned{LockMask}, modifierOfKeysym(XK_Num_Lock), modifierOfKeysym(XK_Scroll_Lock)}) {
        if (lock == 0)
            continue;
        const std::vector<unsigned int> before = combinations;
        for (const unsigned int combination : before)
            combinations.push_back(combination | lock);
    }
    return combinations;
}

void grabWith(KeyCode code, unsigned int modifiers) {
    for (const unsigned int combination : lockCombinations())
        XGrabKey(ownerDisplay(), code, combination | modifiers, rootWindow(), 0, GrabModeAsync,
                 GrabModeAsync);
}

void ungrab(HotKey& key) {
    if (key.keycode != 0)
        XUngrabKey(ownerDisplay(), key.keycode, AnyModifier, rootWindow());
    key.keycode = 0;
}

bool grab(HotKey& key) {
    key.keycode = keycodeOfHotKey(ownerDisplay(), key.virtualKey);
    if (key.keycode == 0)
        return false;
    const ErrorTrap trap; // BadAccess: another program holds it
    grabWith(key.keycode, 0);
    if (!trap.hasFailed()) {
        if (heldModifiers != 0)
            grabWith(key.keycode, heldModifiers);
        return true;
    }
    ungrab(key);
    return false;
}

/// A new layout or keyboard may have put the key elsewhere.
void grabAnew() {
    for (HotKey& key : hotKeys) {
        if (keycodeOfHotKey(ownerDisplay(), key.virtualKey) == key.keycode)
            continue;
        ungrab(key);
        grab(key);
    }
}

void noteHolders(HotKey& key, bool hasFired) {
    key.hasFired = hasFired;
    listenToRawKeys(ListeningReason::hotKeyIsDown, std::ranges::any_of(hotKeys, &HotKey::hasFired));
}

/// The server gives the whole keyboard to us while a grabbed key is down: it goes back at once, or keys
/// released meanwhile would stay down for the program in front. The release of the hot key itself is then
/// heard of by its raw event; the program sees that release without its press, which means nothing to it.
bool handlePress(const XKeyEvent& event) {
    const auto key = std::ranges::find(hotKeys, event.keycode, &HotKey::keycode);
    if (key == hotKeys.end())
        return false;
    XUngrabKeyboard(ownerDisplay(), CurrentTime);
    XFlush(ownerDisplay());
    if (key->hasFired || pressHandler == nullptr)
        return true; // an auto-repeat
    if (key->holders.empty())
        key->holders.insert(unknownDevice);
    noteHolders(*key, true);
    const KeyCode code = key->keycode;
    pressHandler(key->id); // may unregister keys
    for (HotKey& pressed : hotKeys) {
        if (pressed.keycode != code || isKeyDown(code))
            continue; // else it was released before anybody listened
        pressed.holders.clear();
        noteHolders(pressed, false);
    }
    return true;
}

void onRawKey(KeyCode code, int device, bool isPress) {
    for (HotKey& key : hotKeys) {
        if (key.keycode != code)
            continue;
        if (isPress)
            key.holders.insert(device);
        else if (key.holders.erase(device) == 0)
            key.holders.erase(unknownDevice);
        if (key.holders.empty())
            noteHolders(key, false);
    }
}

bool handleKeyEvent(XEvent& event) {
    if (event.type == KeyPress)
        return handlePress(event.xkey);
    if (event.type == MappingNotify) {
        XRefreshKeyboardMapping(&event.xmapping);
        grabAnew();
    }
    return false;
}

void startListening() {
    static const bool isListening = [] {
        // A held key then repeats as presses alone, so that a press after a press is a repeat.
        XkbSetDetectableAutoRepeat(ownerDisplay(), 1, nullptr);
        addEventHandler(handleKeyEvent);
        addRawKeyHandler(onRawKey);
        return true;
    }();
    (void)isListening;
}

} // namespace

void followHeldModifiers() {
    unsigned int now = 0;
    for (const KeyCode code : heldKeycodes())
        now |= modifierOf(code);
    if (now == heldModifiers)
        return;
    const ErrorTrap trap; // another program may hold a combination
    for (const HotKey& key : hotKeys) {
        if (key.keycode == 0)
            continue;
        for (const unsigned int combination : lockCombinations())
            if (heldModifiers != 0)
                XUngrabKey(ownerDisplay(), key.keycode, combination | heldModifiers, rootWindow());
        if (now != 0)
            grabWith(key.keycode, now);
    }
    heldModifiers = now;
}

void setHotKeyHandler(void (*handler)(int id) noexcept) {
    pressHandler = handler;
}

bool registerHotKey(WindowHandle, int id, std::uint16_t virtualKey) {
    if (ownerDisplay() == nullptr)
        return false;
    startListening();
    HotKey key{id, virtualKey, 0, false, {}};
    if (!grab(key))
        return false;
    hotKeys.push_back(key);
    return true;
}

void unregisterHotKey(WindowHandle, int id) {
    for (HotKey& key : hotKeys)
        if (key.id == id)
            ungrab(key);
    std::erase_if(hotKeys, [id](const HotKey& key) { return key.id == id; });
    if (ownerDisplay() != nullptr)
        XFlush(ownerDisplay());
}
