#include "platform/hot_key.h"

#include "platform/threads.h"

#include "platform/linux/connection.h"
#include "platform/linux/held_keys.h"
#include "platform/linux/hot_key.h"
#include "platform/linux/key_positions.h"
#include "platform/linux/owner_loop.h"
#include "platform/linux/raw_keys.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <mutex>
#include <set>
#include <vector>

namespace rotika {

// A press of a grabbed key activates a grab of the whole keyboard until it is released here. Meanwhile other
// keys do not reach the program in front, so the time must be short: hot keys have a connection and a thread
// of their own, which painting cannot delay. The thread only posts presses to the owner thread.

namespace {

using Clock = std::chrono::steady_clock;

struct HotKey {
    int id = 0;
    std::uint16_t virtualKey = 0;
    KeyCode keycode = 0;
    bool hasFired = false; // in the current press: further presses are its repeats
    std::set<int> holders; // devices on which it is down
};

constexpr int unknownDevice = -1; // its raw press came before raw events were selected

struct HotKeys {
    std::mutex mutex; // guards all below and every use of the connection
    Display* display = nullptr;
    std::vector<HotKey> keys;
    unsigned int heldModifiers = 0; // those that this program holds down
    int wakeUp = -1;                // eventfd: the owner thread may have read the thread's events
};

/// Never destroyed: its thread lives as long as the process.
HotKeys& hotKeys() {
    static HotKeys* const instance = new HotKeys;
    return *instance;
}

void (*pressHandler)(int id) noexcept = nullptr; // owner thread

/// The modifier bit of a key on this keyboard, 0 if none.
unsigned int modifierOf(Display* display, KeyCode code) {
    XModifierKeymap* map = XGetModifierMapping(display);
    unsigned int found = 0;
    for (int i = 0; code != 0 && map != nullptr && i < 8 * map->max_keypermod; ++i)
        if (map->modifiermap[i] == code)
            found = 1U << (i / map->max_keypermod);
    if (map != nullptr)
        XFreeModifiermap(map);
    return found;
}

/// Every combination of the lock keys: the toggle key works in every Caps, Num and Scroll Lock state.
std::vector<unsigned int> lockCombinations(Display* display) {
    const auto modifierOfKeysym = [display](KeySym lockKey) {
        return modifierOf(display, XKeysymToKeycode(display, lockKey));
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

void grabWith(Display* display, KeyCode code, unsigned int modifiers) {
    for (const unsigned int combination : lockCombinations(display))
        XGrabKey(display, code, combination | modifiers, DefaultRootWindow(display), 0, GrabModeAsync,
                 GrabModeAsync);
}

void ungrab(Display* display, HotKey& key) {
    if (key.keycode != 0)
        XUngrabKey(display, key.keycode, AnyModifier, DefaultRootWindow(display));
    key.keycode = 0;
}

/// False when another program has grabbed the key or the keyboard lacks it.
bool grab(HotKeys& all, HotKey& key) {
    key.keycode = keycodeOfHotKey(all.display, key.virtualKey);
    if (key.keycode == 0)
        return false;
    const ErrorTrap trap(all.display); // BadAccess: another program has grabbed it
    grabWith(all.display, key.keycode, 0);
    if (!trap.hasFailed()) {
        if (all.heldModifiers != 0)
            grabWith(all.display, key.keycode, all.heldModifiers);
        return true;
    }
    ungrab(all.display, key);
    return false;
}

/// Raw key events, which include all typing, are selected only while a key that has fired is down.
void setFired(HotKeys& all, HotKey& key, bool hasFired) {
    key.hasFired = hasFired;
    if (!hasFired)
        key.holders.clear();
    selectRawKeys(all.display, std::ranges::any_of(all.keys, &HotKey::hasFired));
}

/// A new layout or keyboard may have moved the key.
void regrab(HotKeys& all) {
    for (HotKey& key : all.keys) {
        if (keycodeOfHotKey(all.display, key.virtualKey) == key.keycode)
            continue;
        ungrab(all.display, key);
        grab(all, key);
        setFired(all, key, false); // the current press was that of another key
    }
}

struct Press {
    int id = 0;
    Clock::time_point at;
};

// An older press is discarded: the owner thread was blocked, and the user no longer expects a reaction.
constexpr std::chrono::seconds maxDelay{2};

gboolean deliverPress(gpointer data) {
    const std::unique_ptr<Press> press(static_cast<Press*>(data));
    if (pressHandler != nullptr && Clock::now() - press->at < maxDelay)
        pressHandler(press->id);
    return G_SOURCE_REMOVE;
}

void postPress(int id) {
    callOwnerSoon(deliverPress, new Press{id, Clock::now()});
}

/// Raw events are selected before the keyboard is released, so the key's release arrives in one of the two
/// ways. The program in front gets the release without a press, which is harmless.
void handlePress(HotKeys& all, const XKeyEvent& event) {
    const auto key = std::ranges::find(all.keys, event.keycode, &HotKey::keycode);
    const bool isNew = key != all.keys.end() && !key->hasFired; // else an auto-repeat
    if (isNew) {
        if (key->holders.empty())
            key->holders.insert(unknownDevice);
        setFired(all, *key, true);
    }
    XUngrabKeyboard(all.display, CurrentTime);
    XFlush(all.display);
    if (isNew)
        postPress(key->id);
}

/// Another key was released while the keyboard was grabbed, and would stay down for the program in front.
void forwardRelease(Display* display, XKeyEvent event) {
    if (isKeyDown(display, static_cast<KeyCode>(event.keycode)))
        return; // pressed again already
    int revertTo = 0;
    XGetInputFocus(display, &event.window, &revertTo);
    const ErrorTrap trap(display); // the window may be destroyed meanwhile
    XSendEvent(display, InputFocus, 1, KeyReleaseMask, reinterpret_cast<XEvent*>(&event));
}

void handleRelease(HotKeys& all, const XKeyEvent& event) {
    const auto key = std::ranges::find(all.keys, event.keycode, &HotKey::keycode);
    if (key != all.keys.end())
        setFired(all, *key, false);
    else
        forwardRelease(all.display, event);
}

void handleRawKey(HotKeys& all, const RawKey& raw) {
    const auto key = std::ranges::find(all.keys, raw.code, &HotKey::keycode);
    if (key == all.keys.end())
        return;
    if (raw.isPress) {
        key->holders.insert(raw.device);
        return;
    }
    if (key->holders.erase(raw.device) == 0)
        key->holders.erase(unknownDevice);
    // A release may have been lost, for example to a program that grabbed the keyboard. The server's key
    // state is reliable, but misses a key that is down again already.
    if (key->holders.empty() || !isKeyDown(all.display, key->keycode))
        setFired(all, *key, false);
}

void handleEvent(HotKeys& all, XEvent& event) {
    if (event.type == KeyPress) {
        handlePress(all, event.xkey);
    } else if (event.type == KeyRelease) {
        handleRelease(all, event.xkey);
    } else if (event.type == MappingNotify) {
        XRefreshKeyboardMapping(&event.xmapping);
        regrab(all);
    } else if (event.type == GenericEvent && XGetEventData(all.display, &event.xcookie) != 0) {
        if (const auto raw = rawKeyOf(event))
            handleRawKey(all, *raw);
        XFreeEventData(all.display, &event.xcookie);
    }
}

[[noreturn]] void listen() noexcept {
    HotKeys& all = hotKeys();
    std::array<pollfd, 2> inputs{{{ConnectionNumber(all.display), POLLIN, 0}, {all.wakeUp, POLLIN, 0}}};
    while (true) {
        {
            const std::lock_guard lock(all.mutex);
            while (XPending(all.display) > 0) {
                XEvent event;
                XNextEvent(all.display, &event);
                handleEvent(all, event);
            }
        }
        poll(inputs.data(), inputs.size(), -1);
        eventfd_t ignored = 0;
        if ((inputs[1].revents & POLLIN) != 0)
            eventfd_read(all.wakeUp, &ignored);
    }
}

/// The mutex is held.
bool startListening(HotKeys& all) {
    if (all.display != nullptr)
        return true;
    all.display = ownerDisplay() == nullptr ? nullptr : XOpenDisplay(nullptr);
    if (all.display == nullptr)
        return false;
    all.wakeUp = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    int major = 2;
    int minor = 2;
    XIQueryVersion(all.display, &major, &minor);
    // A held key then repeats as presses only.
    XkbSetDetectableAutoRepeat(all.display, 1, nullptr);
    if (startDetachedThread(listen))
        return true;
    close(all.wakeUp);
    XCloseDisplay(all.display);
    all.display = nullptr;
    return false;
}

/// Locks the hot keys for the owner thread. At the end wakes their thread, whose events may have been read.
class OwnerAccess {
public:
    OwnerAccess() : lock(hotKeys().mutex) {}
    OwnerAccess(const OwnerAccess&) = delete;
    OwnerAccess& operator=(const OwnerAccess&) = delete;
    ~OwnerAccess() {
        if (hotKeys().display == nullptr)
            return;
        XFlush(hotKeys().display);
        eventfd_write(hotKeys().wakeUp, 1);
    }

private:
    std::lock_guard<std::mutex> lock;
};

} // namespace

void followHeldModifiers() {
    const OwnerAccess access;
    HotKeys& all = hotKeys();
    if (all.display == nullptr)
        return;
    unsigned int now = 0;
    for (const KeyCode code : heldKeycodes())
        now |= modifierOf(all.display, code);
    for (const unsigned int lock : lockCombinations(all.display))
        now &= ~lock; // grabbed in any case
    if (now == all.heldModifiers)
        return;
    const ErrorTrap trap(all.display); // another program may hold a combination
    for (const HotKey& key : all.keys) {
        if (key.keycode == 0)
            continue;
        for (const unsigned int combination : lockCombinations(all.display))
            if (all.heldModifiers != 0)
                XUngrabKey(all.display, key.keycode, combination | all.heldModifiers,
                           DefaultRootWindow(all.display));
        if (now != 0)
            grabWith(all.display, key.keycode, now);
    }
    all.heldModifiers = now;
}

void setHotKeyHandler(void (*handler)(int id) noexcept) {
    pressHandler = handler;
}

bool registerHotKey(WindowHandle, int id, std::uint16_t virtualKey) {
    const OwnerAccess access;
    HotKeys& all = hotKeys();
    HotKey key{id, virtualKey, 0, false, {}};
    if (!startListening(all) || !grab(all, key))
        return false;
    all.keys.push_back(key);
    return true;
}

void unregisterHotKey(WindowHandle, int id) {
    const OwnerAccess access;
    HotKeys& all = hotKeys();
    for (HotKey& key : all.keys)
        if (key.id == id)
            ungrab(all.display, key);
    std::erase_if(all.keys, [id](const HotKey& key) { return key.id == id; });
    if (all.display == nullptr)
        return;
    selectRawKeys(all.display, std::ranges::any_of(all.keys, &HotKey::hasFired));
    XSync(all.display, 0);
}

} // namespace rotika
