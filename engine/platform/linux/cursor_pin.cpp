#include "platform/linux/cursor_pin.h"

#include "platform/pointer.h"

#include "platform/linux/connection.h"

#include <chrono>
#include <optional>

namespace rotika {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds lookPeriod{100};

// A program that answers each motion by a move of its own must not drag us into an endless contest.
constexpr int mostReturns = 20;

struct Pin {
    Point position;
    Clock::time_point lastLook;
    int returnsLeft = mostReturns;
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
    if (!pin || pin->returnsLeft == 0 || now - pin->lastLook < lookPeriod)
        return;
    pin->lastLook = now;
    if (cursorPosition() == pin->position)
        return;
    --pin->returnsLeft;
    XWarpPointer(ownerDisplay(), noXid, rootWindow(), 0, 0, 0, 0, pin->position.x, pin->position.y);
    XFlush(ownerDisplay());
}

} // namespace rotika
