#pragma once

#include "base/color.h"
#include "common/limits.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace rotika {

/// A keyboard key or a mouse button.
struct KeyCode {
    std::uint16_t vk = 0; // Win32 virtual key; 0 for a mouse button
    bool extended = false;
    bool isMouse = false;
    std::uint32_t mouseButton = 0; // 0 left, 1 right, 2 middle, 3 and 4 the side buttons
    bool valid = false;            // false for an unknown token
    std::u16string text;           // the token as written, blanks trimmed

    bool operator==(const KeyCode&) const = default;
};

enum class StepKind : std::uint32_t { click = 0, hold = 1, release = 2, open = 3 };

struct ActionStep {
    KeyCode key; // not valid for an open step
    StepKind kind = StepKind::click;
    std::int32_t value = 1; // click: 1 to maxClickCount; hold: ms up to maxHoldMs, 0 leaves the key down
    std::u16string target;  // open: address, file or program

    bool operator==(const ActionStep&) const = default;
};

/// One field of a wheel, or one function that only voice can run.
struct WheelAction {
    std::u16string name;
    std::vector<ActionStep> steps;
    std::int32_t delay = defaultDelayMs; // ms between one step and the next, 0 to maxDelayMs
    RgbColor color = 0;                  // meaningful only if hasColor
    bool hasColor = false;
    std::u16string icon;  // image path, relative to the folder of the program unless absolute
    std::u16string voice; // spoken phrase

    bool operator==(const WheelAction&) const = default;
};

/// An active wheel has 1 to maxFieldCount actions.
struct Wheel {
    std::u16string name;
    std::vector<WheelAction> actions;

    bool operator==(const Wheel&) const = default;
};

} // namespace rotika
