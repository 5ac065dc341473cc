#include "platform/hot_key.h"

#include "platform/linux/auto_repeat.h"
#include "platform/linux/connection.h"
#include "platform/linux/hot_key_events.h"
#include "platform/linux/key_positions.h"

#include <vector>

namespace {

struct HotKey {
    int id = 0;
    std::uint16_t virtualKey = 0;
    KeyCode keycode = 0;
    bool isDown = false;
};

std::vector<HotKey> hotKeys;
bool isHandlingPress = false;
void (*pressHandler)(int id) noexcept = nullptr;

/// The modifier bit that a lock key has on this keyboard, 0 if none.
unsigned int modifierOf(KeySym lockKey) {
    const KeyCode code = XKeysymToKeycode(ownerDisplay(), lockKey);
    XModifierKeymap* map = XGetModifierMapping(ownerDisplay());
    unsigned int found = 0;
    for (int i = 0; code != 0 && map != nullptr && i < 8 * map->max_keypermod; ++i)
        if (map->modifiermap[i] == code)
            found = 1U << (i / map->max_keypermod);
    if (map != nullptr)
        XFreeModifiermap(map);
    return found;
}

/// Every combination of the lock keys: the toggle key works whatever lamps are lit.
std::vector<unsigned int> lockCombinations() {
    std::vector<unsigned int> combinations{0};
    for (const unsigned int lock :
         {unsigned{LockMask}, modifierOf(XK_Num_Lock), modifierOf(XK_Scroll_Lock)}) {
        if (lock == 0)
            continue;
        const std::vector<unsigned int> before = combinations;
        for (const unsigned int combination : before)
            combinations.push_back(combination | lock);
    }
    return combinations;
}

void ungrab(HotKey& key) {
    if (key.keycode == 0)
        return;
    XUngrabKey(ownerDisplay(), key.keycode, AnyModifier, rootWindow());
    restoreAutoRepeat(ownerDisplay(), key.keycode);
    key.keycode = 0;
}

bool grab(HotKey& key) {
    key.keycode = keycodeOfVirtualKey(ownerDisplay(), key.virtualKey);
    if (key.keycode == 0)
        return false;
    const ErrorTrap trap; // BadAccess: another program holds it
    for (const unsigned int combination : lockCombinations())
        XGrabKey(ownerDisplay(), key.keycode, combination, rootWindow(), 0, GrabModeAsync, GrabModeAsync);
    // A key that is held must not come again and again, least of all after letGoOfHeldHotKey.
    silenceAutoRepeat(ownerDisplay(), key.keycode);
    if (!trap.hasFailed())
        return true;
    ungrab(key);
    return false;
}

/// A new layout or keyboard may have put the key elsewhere.
void grabAnew() {
    for (HotKey& key : hotKeys) {
        if (keycodeOfVirtualKey(ownerDisplay(), key.virtualKey) == key.keycode)
            continue;
        ungrab(key);
        grab(key);
    }
}

bool handlePress(const XKeyEvent& event) {
    for (HotKey& key : hotKeys) {
        if (event.keycode != key.keycode)
            continue;
        const bool isRepeat = key.isDown;
        key.isDown = true;
        if (isRepeat || pressHandler == nullptr)
            return true;
        isHandlingPress = true;
        pressHandler(key.id);
        isHandlingPress = false;
        return true;
    }
    return false;
}

bool handleRelease(const XKeyEvent& event) {
    for (HotKey& key : hotKeys)
        if (event.keycode == key.keycode)
            key.isDown = false;
    return false;
}

bool handleKeyEvent(XEvent& event) {
    if (event.type == KeyPress)
        return handlePress(event.xkey);
    if (event.type == KeyRelease)
        return handleRelease(event.xkey);
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
        return true;
    }();
    (void)isListening;
}

} // namespace

void letGoOfHeldHotKey() {
    if (isHandlingPress)
        return;
    for (HotKey& key : hotKeys) {
        if (!key.isDown)
            continue;
        XUngrabKeyboard(ownerDisplay(), CurrentTime);
        key.isDown = false; // its release goes elsewhere now
    }
}

void setHotKeyHandler(void (*handler)(int id) noexcept) {
    pressHandler = handler;
}

bool registerHotKey(WindowHandle, int id, std::uint16_t virtualKey) {
    if (ownerDisplay() == nullptr)
        return false;
    startListening();
    HotKey key{id, virtualKey, 0, false};
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
