#include "platform/hot_key.h"

#include "platform/threads.h"

#include "platform/linux/connection.h"
#include "platform/linux/glib_handles.h"
#include "platform/linux/held_keys.h"
#include "platform/linux/hot_key_events.h"
#include "platform/linux/key_positions.h"
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

// The server gives the whole keyboard to us while a grabbed key goes down, until we give it back. What other
// keys do meanwhile never reaches the program in front, so the time must be short: hot keys have a connection
// and a thread of their own, which no painting holds up. The thread only passes presses on to the owner
// thread.

namespace {

using Clock = std::chrono::steady_clock;

struct HotKey {
    int id = 0;
    std::uint16_t virtualKey = 0;
    KeyCode keycode = 0;
    bool hasFired = false; // for the press under way: what comes now are its repeats
    std::set<int> holders; // devices that have it down
};

constexpr int unknownDevice = -1; // its raw press came before anybody listened

struct HotKeys {
    std::mutex mutex; // held for all below and for every use of the connection
    Display* display = nullptr;
    std::vector<HotKey> keys;
    unsigned int heldModifiers = 0; // those that the program itself holds down
    int wakeUp = -1;                // the owner thread may have read events that the thread waits for
};

/// Never destroyed: its thread lives as long as the process.
HotKeys& hotKeys() {
    static HotKeys* const instance = new HotKeys;
    return *instance;
}

void (*pressHandler)(int id) noexcept = nullptr; // owner thread

/// The modifier bit that a key has on this keyboard, 0 if none.
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

/// False when another program holds the key or the keyboard has none for it.
bool grab(HotKeys& all, HotKey& key) {
    key.keycode = keycodeOfHotKey(all.display, key.virtualKey);
    if (key.keycode == 0)
        return false;
    const ErrorTrap trap(all.display); // BadAccess: another program holds it
    grabWith(all.display, key.keycode, 0);
    if (!trap.hasFailed()) {
        if (all.heldModifiers != 0)
            grabWith(all.display, key.keycode, all.heldModifiers);
        return true;
    }
    ungrab(all.display, key);
    return false;
}

/// The person's typing is heard of only while a key that has fired is down.
void noteHolders(HotKeys& all, HotKey& key, bool hasFired) {
    key.hasFired = hasFired;
    if (!hasFired)
        key.holders.clear();
    selectRawKeys(all.display, std::ranges::any_of(all.keys, &HotKey::hasFired));
}

/// A new layout or keyboard may have put the key elsewhere.
void grabAnew(HotKeys& all) {
    for (HotKey& key : all.keys) {
        if (keycodeOfHotKey(all.display, key.virtualKey) == key.keycode)
            continue;
        ungrab(all.display, key);
        grab(all, key);
        noteHolders(all, key, false); // the press under way was that of another key
    }
}

struct Press {
    int id = 0;
    Clock::time_point at;
};

// A press that the owner thread could not hear of in time is not made up for: nobody waits for it any more.
constexpr std::chrono::seconds longestDelay{2};

gboolean deliverPress(gpointer data) {
    const std::unique_ptr<Press> press(static_cast<Press*>(data));
    if (pressHandler != nullptr && Clock::now() - press->at < longestDelay)
        pressHandler(press->id);
    return G_SOURCE_REMOVE;
}

void postPress(int id) {
    callOwnerSoon(deliverPress, new Press{id, Clock::now()});
}

/// The raw events are asked for before the keyboard is given back: the key's release then comes by one of the
/// two roads. The program in front sees that release without its press, which means nothing to it.
void handlePress(HotKeys& all, const XKeyEvent& event) {
    const auto key = std::ranges::find(all.keys, event.keycode, &HotKey::keycode);
    const bool isNew = key != all.keys.end() && !key->hasFired; // else an auto-repeat
    if (isNew) {
        if (key->holders.empty())
            key->holders.insert(unknownDevice);
        noteHolders(all, *key, true);
    }
    XUngrabKeyboard(all.display, CurrentTime);
    XFlush(all.display);
    if (isNew)
        postPress(key->id);
}

/// Another key was let go before the keyboard was given back, and would stay down for the program in front.
void passReleaseOn(Display* display, XKeyEvent event) {
    if (isKeyDown(display, static_cast<KeyCode>(event.keycode)))
        return; // pressed again already
    int revertTo = 0;
    XGetInputFocus(display, &event.window, &revertTo);
    const ErrorTrap trap(display); // the window may go
    XSendEvent(display, InputFocus, 1, KeyReleaseMask, reinterpret_cast<XEvent*>(&event));
}

void handleRelease(HotKeys& all, const XKeyEvent& event) {
    const auto key = std::ranges::find(all.keys, event.keycode, &HotKey::keycode);
    if (key != all.keys.end())
        noteHolders(all, *key, false);
    else
        passReleaseOn(all.display, event);
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
    // A release may have been lost, to a program that grabbed the keyboard itself for example: what the
    // server says is true in any case, but says nothing of a key that is down again already.
    if (key->holders.empty() || !isKeyDown(all.display, key->keycode))
        noteHolders(all, *key, false);
}

void handleEvent(HotKeys& all, XEvent& event) {
    if (event.type == KeyPress) {
        handlePress(all, event.xkey);
    } else if (event.type == KeyRelease) {
        handleRelease(all, event.xkey);
    } else if (event.type == MappingNotify) {
        XRefreshKeyboardMapping(&event.xmapping);
        grabAnew(all);
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
    // A held key then repeats as presses alone.
    XkbSetDetectableAutoRepeat(all.display, 1, nullptr);
    if (startDetachedThread(listen))
        return true;
    close(all.wakeUp);
    XCloseDisplay(all.display);
    all.display = nullptr;
    return false;
}

/// For the owner thread: the connection's events may have been read here.
class OwnersTurn {
public:
    OwnersTurn() : lock(hotKeys().mutex) {}
    OwnersTurn(const OwnersTurn&) = delete;
    OwnersTurn& operator=(const OwnersTurn&) = delete;
    ~OwnersTurn() {
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
    const OwnersTurn turn;
    HotKeys& all = hotKeys();
    if (all.display == nullptr)
        return;
    unsigned int now = 0;
    for (const KeyCode code : heldKeycodes())
        now |= modifierOf(all.display, code);
    for (const unsigned int lock : lockCombinations(all.display))
        now &= ~lock; // grabbed for in any case
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
    const OwnersTurn turn;
    HotKeys& all = hotKeys();
    HotKey key{id, virtualKey, 0, false, {}};
    if (!startListening(all) || !grab(all, key))
        return false;
    all.keys.push_back(key);
    return true;
}

void unregisterHotKey(WindowHandle, int id) {
    const OwnersTurn turn;
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
