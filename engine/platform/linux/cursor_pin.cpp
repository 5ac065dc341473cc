#include "platform/linux/cursor_pin.h"

#include "platform/pointer.h"

#include "platform/linux/connection.h"

#include <chrono>
#include <optional>

namespace rotika {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds checkPeriod{100};

// Guard against an endless loop with a program that moves the cursor after each motion.
constexpr int maxReturns = 20;

struct Pin {
    Point position;
    Clock::time_point lastCheck;
    int returnsLeft = maxReturns;
};
std::optional<Pin> pin;

} // namespace

void pinCursor(Point position) {
    pin = Pin{position, Clock::now()};
}

void unpinCursor() {
    pin.reset();
}

bool isCursorPinned() {
    return pin.has_value();
}

void keepCursorPinned() {
    const Clock::time_point now = Clock::now();
    if (!pin || pin->returnsLeft == 0 || now - pin->lastCheck < checkPeriod)
        return;
    pin->lastCheck = now;
    if (cursorPosition() == pin->position)
        return;
    --pin->returnsLeft;
    XWarpPointer(ownerDisplay(), noXid, rootWindow(), 0, 0, 0, 0, pin->position.x, pin->position.y);
    XFlush(ownerDisplay());
}

} // namespace rotika
