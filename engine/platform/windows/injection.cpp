#include "platform/injection.h"

#include "platform/threads.h"

#include "platform/windows/held_things.h"
#include "platform/windows/hot_key_modifiers.h"
#include "platform/windows/input_guard.h"
#include "platform/windows/input_sending.h"
#include "platform/windows/windows_api.h"

#include <mutex>
#include <vector>

namespace rotika {

namespace {

/// Never destroyed: a thread that nobody waits for works on it.
struct Injection {
    // Keeps an event and its record together when two runs press the same key.
    std::mutex mutex;
    /// Whose release the system refused. The guard has them as down meanwhile.
    HeldThings unreleased;
    HeldThings pressed;
    /// Whose press did not arrive, while they were up. Their release, refused as well, is not tried again:
    /// it would come when the person holds the key.
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

/// From now on the thing is up, for all that we know.
void noteRelease(GuardRecord record) {
    record.down = 0;
    injection().unreleased.apply(record);
    injection().pressed.apply(record);
    injection().unpressed.apply(record);
    tellInputGuard(record);
    noteKey(record, false);
}

/// Until all are up: what stays down makes the desktop unusable, and the desktop may be away for hours.
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

void keepForLater(GuardRecord record) {
    record.down = 1;
    tellInputGuard(record);
    injection().unreleased.apply(record);
    if (!injection().isRetrying) {
        injection().isRetrying = startDetachedThread(releaseAgain);
    }
}

/// The guard hears of a press before it happens and of a release after it: killed in between, it lets go once
/// too often rather than once too seldom.
void inject(GuardRecord record, InputMotion motion) {
    const std::lock_guard<std::mutex> hold(injection().mutex);
    if (motion == InputMotion::up) {
        if (sendRelease(record) || injection().unpressed.contains(record)) {
            noteRelease(record);
        } else {
            keepForLater(record);
        }
        return;
    }
    injection().unreleased.apply(record); // this press has a release of its own
    record.down = motion == InputMotion::downUntilReleased ? 1 : 0;
    tellInputGuard(record);
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
