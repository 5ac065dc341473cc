#include "platform/injection.h"

#include "platform/windows/hot_key_modifiers.h"
#include "platform/windows/input_guard.h"
#include "platform/windows/input_sending.h"

#include <mutex>

namespace {

// Keeps an event and its record together when two runs press the same key.
std::mutex injectionLock;

/// The guard hears of a press before it happens and of a release after it: killed in between, it lets go once
/// too often rather than once too seldom.
template <typename Send>
void injectGuarded(GuardRecord record, InputMotion motion, Send send) {
    const std::lock_guard<std::mutex> hold(injectionLock);
    record.down = motion == InputMotion::downUntilReleased ? 1 : 0;
    if (motion == InputMotion::up) {
        send(false);
        tellInputGuard(record);
    } else {
        tellInputGuard(record);
        send(true);
    }
}

} // namespace

void injectKey(std::uint16_t virtualKey, bool extended, InputMotion motion) {
    GuardRecord record;
    record.kind = GuardedThing::key;
    record.extended = extended ? 1 : 0;
    record.code = virtualKey;
    injectGuarded(record, motion, [=](bool down) {
        sendKeyEvent(virtualKey, extended, down);
        noteInjectedKey(virtualKey, down);
    });
}

void injectMouseButton(std::uint32_t button, InputMotion motion) {
    GuardRecord record;
    record.kind = GuardedThing::button;
    record.code = button;
    injectGuarded(record, motion, [=](bool down) { sendButtonEvent(button, down); });
}
