#pragma once

#include <cstdint>

namespace rotika {

/// Command ids in the phrase table and in MsgVoiceCommand.
enum VoiceCommand : std::int32_t {
    commandShowWheel = 1,
    commandHideWheel = 2,
    commandNextWheel = 3,
    commandPreviousWheel = 4,
    commandShowGrid = 5,
    commandHideGrid = 6,
    commandClick = 7,
    commandDoubleClick = 8,
    commandRightClick = 9,
    commandLabelElements = 10,
    commandHideElements = 11,
    commandLabelPage = 12,
    // Base values: a number from 1 to 99 is added
    commandNumber = 100,
    commandDoubleClickNumber = 300,
    commandRightClickNumber = 500,
};

inline constexpr std::int32_t largestSpokenNumber = 99;

} // namespace rotika
