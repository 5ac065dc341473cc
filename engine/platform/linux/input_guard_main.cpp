// The guard: a small process beside the program that knows which keys and buttons the program has down for a
// moment. When the program dies, in whatever way, it lets go of them and undoes what the program had changed
// on the keyboard, and ends.

#include "platform/input_guard_protocol.h"

#include "platform/linux/x11.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <set>
#include <utility>

namespace {

using GuardedItem = std::pair<GuardedThing, std::uint32_t>;

/// Returns when the program is gone.
std::set<GuardedItem> followProgram() {
    std::set<GuardedItem> down;
    GuardRecord record;
    while (true) {
        const ssize_t received = recv(STDIN_FILENO, &record, sizeof record, 0);
        if (received < 0 && errno == EINTR)
            continue;
        if (received != sizeof record)
            return down;
        if (record.down != 0)
            down.insert({record.kind, record.code});
        else
            down.erase({record.kind, record.code});
    }
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
    case GuardedThing::pointerPin: // the server ends a dead client's grabs by itself
        break;
    }
}

} // namespace

int main() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE})
        std::signal(number, SIG_IGN);
    // Opened now: when it is needed there is no time to lose.
    Display* display = XOpenDisplay(nullptr);
    const std::set<GuardedItem> left = followProgram();
    if (display == nullptr)
        return 1;
    XTestGrabControl(display, 1);
    for (const GuardedItem& item : left)
        letGo(display, item);
    XCloseDisplay(display);
    return 0;
}
