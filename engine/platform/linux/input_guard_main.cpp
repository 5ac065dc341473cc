// The guard: a small separate process with a list of the keys and buttons that the program holds down and the
// mice that it has detached. When the program dies, the guard releases them, restores the keyboard settings
// that the program had changed, and ends. When the program hangs while mice are detached, the guard
// reattaches them and continues.

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

constexpr std::chrono::milliseconds heartbeatLimit{captureSilenceLimitMs};

/// A device that was just unplugged must not end the guard.
int ignoreError(Display*, XErrorEvent*) {
    return 0;
}

bool isAttached(Display* display, int device) {
    int count = 0;
    const DeviceInfos info = queryDevices(display, device, count);
    return count > 0 && info->use == XISlavePointer;
}

/// Works with and without an active grab by the program.
void reattachMouse(Display* display, std::uint32_t code) {
    const int device = static_cast<int>(code & 0xFFFF);
    if (isAttached(display, device))
        return;
    XIAnyHierarchyChangeInfo change{};
    change.attach.type = XIAttachSlave;
    change.attach.deviceid = device;
    change.attach.new_master = static_cast<int>(code >> 16);
    XIChangeHierarchy(display, &change, 1);
}

void release(Display* display, const GuardedItem& item) {
    const auto& [kind, code] = item;
    switch (kind) {
    case GuardedThing::key:
        XTestFakeKeyEvent(display, code, 0, CurrentTime);
        break;
    case GuardedThing::button:
        XTestFakeButtonEvent(display, code, 0, CurrentTime);
        break;
    case GuardedThing::pointerPin:
        reattachMouse(display, code);
        break;
    case GuardedThing::autoRepeat: {
        XKeyboardControl control{};
        control.key = static_cast<int>(code);
        control.auto_repeat_mode = AutoRepeatModeOn;
        XChangeKeyboardControl(display, KBKey | KBAutoRepeatMode, &control);
        break;
    }
    case GuardedThing::temporaryKeycode: {
        KeySym nothing = NoSymbol;
        XChangeKeyboardMapping(display, static_cast<int>(code), 1, &nothing, 1);
        break;
    }
    case GuardedThing::heldButton: // handled after all mice are attached
    case GuardedThing::heartbeat:
        break;
    }
}

class Guard {
public:
    explicit Guard(Display* opened) : display(opened) {}

    /// Returns when the program has ended.
    void watchProgram();
    void releaseAll();

private:
    bool isPinned() const {
        return std::any_of(down.begin(), down.end(),
                           [](const GuardedItem& item) { return item.first == GuardedThing::pointerPin; });
    }
    int waitMs() const;
    void apply(const GuardRecord& record);
    void releaseDetachedButtons();
    void reattachMice();

    Display* display;
    std::set<GuardedItem> down;
    Clock::time_point lastHeartbeat = Clock::now(); // from the thread that detached the mice
    bool hasReattached = false;                     // since lastHeartbeat
};

/// How long the program may send nothing from now on; -1: unlimited.
int Guard::waitMs() const {
    if (hasReattached || !isPinned())
        return -1;
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(lastHeartbeat + heartbeatLimit - Clock::now());
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
}

void Guard::apply(const GuardRecord& record) {
    // Records of other threads say nothing about the thread that detached the mice.
    if (record.kind == GuardedThing::heartbeat || record.kind == GuardedThing::pointerPin) {
        lastHeartbeat = Clock::now();
        hasReattached = false;
    }
    if (record.kind == GuardedThing::heartbeat)
        return;
    if (record.down != 0)
        down.insert({record.kind, record.code});
    else
        down.erase({record.kind, record.code});
}

void Guard::releaseDetachedButtons() {
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

void Guard::reattachMice() {
    for (const GuardedItem& item : down)
        if (item.first == GuardedThing::pointerPin)
            release(display, item);
    releaseDetachedButtons();
    XSync(display, 0);
    hasReattached = true;
}

void Guard::watchProgram() {
    while (true) {
        pollfd input{STDIN_FILENO, POLLIN, 0};
        const int ready = poll(&input, 1, waitMs());
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready == 0) {
            reattachMice();
            continue;
        }
        GuardRecord record;
        const ssize_t received = recv(STDIN_FILENO, &record, sizeof record, MSG_WAITALL);
        if (received < 0 && errno == EINTR)
            continue;
        if (received != sizeof record)
            return;
        apply(record);
    }
}

void Guard::releaseAll() {
    XTestGrabControl(display, 1);
    for (const GuardedItem& item : down)
        release(display, item);
    releaseDetachedButtons();
}

} // namespace

int main() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE})
        std::signal(number, SIG_IGN);
    // Opened in advance: it must be ready when the program dies.
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr)
        return 1;
    XSetErrorHandler(ignoreError);
    int major = 2;
    int minor = 2;
    XIQueryVersion(display, &major, &minor);
    Guard guard(display);
    guard.watchProgram();
    guard.releaseAll();
    XCloseDisplay(display);
    return 0;
}
