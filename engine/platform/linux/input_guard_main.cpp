// The guard: a small process beside the program that knows which keys and buttons the program has down for a
// moment and which mice it holds back. When the program dies, in whatever way, the guard lets go of them,
// undoes what the program had changed on the keyboard, and ends. When the program stands still while it holds
// the mice back, the guard gives them back and goes on watching.

#include "platform/input_guard_protocol.h"
#include "platform/pointer_capture.h"

#include "platform/linux/input_devices.h"
#include "platform/linux/x11.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <set>
#include <utility>

using namespace rotika;

namespace {

using Clock = std::chrono::steady_clock;
using GuardedItem = std::pair<GuardedThing, std::uint32_t>;

constexpr std::chrono::milliseconds silenceLimit{captureSilenceLimitMs};

/// A device that is unplugged at the wrong moment must not end the guard.
int ignoreError(Display*, XErrorEvent*) {
    return 0;
}

bool isAttached(Display* display, int device) {
    int count = 0;
    const DeviceInfos info = queryDevices(display, device, count);
    return count > 0 && info->use == XISlavePointer;
}

/// Works whether or not the program's grab still stands.
void giveBackMouse(Display* display, std::uint32_t code) {
    const int device = static_cast<int>(code & 0xFFFF);
    if (isAttached(display, device))
        return;
    XIAnyHierarchyChangeInfo change{};
    change.attach.type = XIAttachSlave;
    change.attach.deviceid = device;
    change.attach.new_master = static_cast<int>(code >> 16);
    XIChangeHierarchy(display, &change, 1);
}

void letGo(Display* display, const GuardedItem& item) {
    const auto& [kind, code] = item;
    switch (kind) {
    case GuardedThing::key:
        XTestFakeKeyEvent(display, code, 0, CurrentTime);
        break;
    case GuardedThing::button:
        XTestFakeButtonEvent(display, code, 0, CurrentTime);
        break;
    case GuardedThing::pointerPin:
        giveBackMouse(display, code);
        break;
    case GuardedThing::autoRepeat: {
        XKeyboardControl control{};
        control.key = static_cast<int>(code);
        control.auto_repeat_mode = AutoRepeatModeOn;
        XChangeKeyboardControl(display, KBKey | KBAutoRepeatMode, &control);
        break;
    }
    case GuardedThing::borrowedKeycode: {
        KeySym nothing = NoSymbol;
        XChangeKeyboardMapping(display, static_cast<int>(code), 1, &nothing, 1);
        break;
    }
    case GuardedThing::heldButton: // after all mice are back
    case GuardedThing::heartbeat:
        break;
    }
}

class Guard {
public:
    explicit Guard(Display* opened) : display(opened) {}

    /// Returns when the program is gone.
    void followProgram();
    void letGoOfEverything();

private:
    bool isPinned() const {
        return std::any_of(down.begin(), down.end(),
                           [](const GuardedItem& item) { return item.first == GuardedThing::pointerPin; });
    }
    int waitMs() const;
    void note(const GuardRecord& record);
    void releaseHeldButtons();
    void giveBackMice();

    Display* display;
    std::set<GuardedItem> down;
    Clock::time_point lastHeard = Clock::now(); // of the thread that holds the mice
    bool hasGivenBack = false;                  // since lastHeard
};

/// How long the program may stay silent from now on; -1 for ever.
int Guard::waitMs() const {
    if (hasGivenBack || !isPinned())
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(lastHeard + silenceLimit - Clock::now());
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
}

void Guard::note(const GuardRecord& record) {
    // Other threads press keys while the one that holds the mice stands still.
    if (record.kind == GuardedThing::heartbeat || record.kind == GuardedThing::pointerPin) {
        lastHeard = Clock::now();
        hasGivenBack = false;
    }
    if (record.kind == GuardedThing::heartbeat)
        return;
    if (record.down != 0)
        down.insert({record.kind, record.code});
    else
        down.erase({record.kind, record.code});
}

/// Those alone: a click that a window manager still holds back looks the same, and would be doubled.
void Guard::releaseHeldButtons() {
    std::set<std::size_t> held;
    std::erase_if(down, [&held](const GuardedItem& item) {
        const bool isHeld = item.first == GuardedThing::heldButton;
        if (isHeld)
            held.insert(item.second);
        return isHeld;
    });
    if (!held.empty())
        releaseForgottenButtons(display, held);
}

void Guard::giveBackMice() {
    for (const GuardedItem& item : down)
        if (item.first == GuardedThing::pointerPin)
            letGo(display, item);
    releaseHeldButtons();
    XSync(display, 0);
    hasGivenBack = true;
}

void Guard::followProgram() {
    while (true) {
        pollfd input{STDIN_FILENO, POLLIN, 0};
        const int ready = poll(&input, 1, waitMs());
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready == 0) {
            giveBackMice();
            continue;
        }
        GuardRecord record;
        const ssize_t received = recv(STDIN_FILENO, &record, sizeof record, MSG_WAITALL);
        if (received < 0 && errno == EINTR)
            continue;
        if (received != sizeof record)
            return;
        note(record);
    }
}

void Guard::letGoOfEverything() {
    XTestGrabControl(display, 1);
    for (const GuardedItem& item : down)
        letGo(display, item);
    releaseHeldButtons();
}

} // namespace

int main() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE})
        std::signal(number, SIG_IGN);
    // Opened now: when it is needed there is no time to lose.
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr)
        return 1;
    XSetErrorHandler(ignoreError);
    int major = 2;
    int minor = 2;
    XIQueryVersion(display, &major, &minor);
    Guard guard(display);
    guard.followProgram();
    guard.letGoOfEverything();
    XCloseDisplay(display);
    return 0;
}
