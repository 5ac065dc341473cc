#include "platform/injection.h"

#include "platform/threads.h"

#include "platform/windows/held_things.h"
#include "platform/windows/hot_key.h"
#include "platform/windows/input_guard.h"
#include "platform/windows/input_sending.h"
#include "platform/windows/windows_api.h"

#include <mutex>
#include <vector>

namespace rotika {

namespace {

/// Never destroyed: used by a detached thread.
struct Injection {
    // Keeps an event and its record together when two runs press the same key. Held during SendInput, which
    // may wait for low-level hooks, but no longer than the system's limit for hooks.
    std::mutex mutex;
    /// Release refused by the system. For the guard they are still down.
    HeldThings unreleased;
    HeldThings pressed;
    /// Press refused while they were up. If the release is refused too, it is not retried: it could end a
    /// later press by the user.
    HeldThings unpressed;
    bool isRetrying = false;
};

Injection& injection() {
    static auto& only = *new Injection;
    return only;
}

void noteKey(const GuardRecord& record, bool down) {
    if (record.kind == GuardedThing::key) {
        noteInjectedKey(static_cast<std::uint16_t>(record.code), down);
    }
}

void notePress(GuardRecord record, bool hasArrived) {
    record.down = 1;
    if (hasArrived) {
        injection().pressed.apply(record);
    }
    record.down = injection().pressed.contains(record) ? 0 : 1;
    injection().unpressed.apply(record);
    noteKey(record, true);
}

/// From now on the key or button is considered up.
void noteRelease(GuardRecord record) {
    record.down = 0;
    injection().unreleased.apply(record);
    injection().pressed.apply(record);
    injection().unpressed.apply(record);
    notifyInputGuard(record);
    noteKey(record, false);
}

/// Runs until all are up: a key left down makes the desktop unusable, and the desktop may be locked for
/// hours.
void releaseAgain() noexcept {
    while (true) {
        Sleep(releaseRetryMs);
        const std::lock_guard<std::mutex> hold(injection().mutex);
        const std::vector<GuardRecord> things = injection().unreleased.all();
        for (const GuardRecord& thing : things) {
            if (sendReleaseAgain(thing)) {
                noteRelease(thing);
            }
        }
        if (injection().unreleased.all().empty()) {
            injection().isRetrying = false;
            return;
        }
    }
}

void scheduleRelease(GuardRecord record) {
    record.down = 1;
    notifyInputGuard(record);
    injection().unreleased.apply(record);
    if (!injection().isRetrying) {
        injection().isRetrying = startDetachedThread(releaseAgain);
    }
}

/// The guard gets a press before it is sent and a release after it: if this process is killed in between, a
/// superfluous release is sent rather than none.
void inject(GuardRecord record, InputMotion motion) {
    const std::lock_guard<std::mutex> hold(injection().mutex);
    if (motion == InputMotion::up) {
        if (sendRelease(record) || injection().unpressed.contains(record)) {
            noteRelease(record);
        } else {
            scheduleRelease(record);
        }
        return;
    }
    injection().unreleased.apply(record); // this press has a release of its own
    record.down = motion == InputMotion::downUntilReleased ? 1 : 0;
    notifyInputGuard(record);
    notePress(record, sendPress(record));
}

} // namespace

void injectKey(std::uint16_t virtualKey, bool extended, InputMotion motion) {
    GuardRecord record;
    record.kind = GuardedThing::key;
    record.extended = extended ? 1 : 0;
    record.code = virtualKey;
    inject(record, motion);
}

void injectMouseButton(std::uint32_t button, InputMotion motion) {
    GuardRecord record;
    record.kind = GuardedThing::button;
    record.code = button;
    inject(record, motion);
}

} // namespace rotika
