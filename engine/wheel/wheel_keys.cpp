#include "wheel/wheel_keys.h"

#include "model/engine_config.h"
#include "model/engine_state.h"
#include "wheel/capture.h"
#include "wheel/painter.h"
#include "wheel/selection.h"
#include "wheel/tick.h"
#include "wheel/wheel_layout.h"

#include <optional>

namespace rotika {

namespace {

enum VirtualKey : std::uint16_t {
    keyEnter = 0x0D, // of both key blocks
    keyEscape = 0x1B,
    keySpace = 0x20,
    keyPageUp = 0x21,
    keyPageDown = 0x22,
    keyLeft = 0x25,
    keyUp = 0x26,
    keyRight = 0x27,
    keyDown = 0x28,
    keyKeypad0 = 0x60,
    keyKeypad9 = 0x69,
};

std::int32_t fieldCount() {
    return static_cast<std::int32_t>(activeWheelRecord().actions.size());
}

/// The field of a digit: 1 to 9 the first nine, 0 the tenth. Nullopt for other keys and missing fields.
std::optional<std::int32_t> fieldOfDigit(std::uint16_t virtualKey) {
    std::int32_t digit = -1;
    if (virtualKey >= '0' && virtualKey <= '9')
        digit = virtualKey - '0';
    else if (virtualKey >= keyKeypad0 && virtualKey <= keyKeypad9)
        digit = virtualKey - keyKeypad0;
    const std::int32_t field = digit == 0 ? 9 : digit - 1;
    return digit >= 0 && field < fieldCount() ? std::optional(field) : std::nullopt;
}

void aimAtField(std::int32_t field) {
    const Point middle = labelPoint(field, fieldCount());
    engineState.cursorX = middle.x;
    engineState.cursorY = middle.y;
    engineState.hoveredField = field;
    engineState.hoveredArrow = -1;
    paintWheel();
}

/// From outside of all fields to the first one.
void moveRoundRing(std::int32_t step) {
    const std::int32_t count = fieldCount();
    const std::int32_t from = engineState.hoveredField;
    aimAtField(from < 0 ? 0 : (from + step + count) % count);
}

void turnPageIfAny(std::int32_t arrow) {
    if (engineState.wheels.size() >= 2)
        turnPage(arrow);
}

void pressedOrRepeated(std::uint16_t virtualKey) {
    noteRealMotion();
    switch (virtualKey) {
    case keyRight:
    case keyDown:
        moveRoundRing(1);
        break;
    case keyLeft:
    case keyUp:
        moveRoundRing(-1);
        break;
    case keyPageUp:
        turnPageIfAny(0);
        break;
    case keyPageDown:
        turnPageIfAny(1);
        break;
    default:
        if (const auto field = fieldOfDigit(virtualKey))
            aimAtField(*field);
        break;
    }
}

void released(std::uint16_t virtualKey) {
    if (virtualKey == keyEscape) {
        closeWheel();
    } else if (virtualKey == keyEnter || virtualKey == keySpace) {
        selectUnderCursor();
    } else if (const auto field = fieldOfDigit(virtualKey)) {
        aimAtField(*field); // the mouse may have moved the cursor since the press
        selectUnderCursor();
    }
}

} // namespace

void handleWheelKey(std::uint16_t virtualKey, KeyChange change) noexcept {
    if (!engineState.wheelVisible || !engineConfig.takeFocus)
        return;
    if (change == KeyChange::pressed)
        engineState.heldKey = virtualKey;
    if (engineState.heldKey != virtualKey)
        return;
    if (change == KeyChange::released) {
        engineState.heldKey = 0;
        released(virtualKey);
    } else {
        pressedOrRepeated(virtualKey);
    }
}

void forgetHeldWheelKey() noexcept {
    engineState.heldKey = 0;
}

} // namespace rotika
