#pragma once

#include <cstdint>

namespace rotika {

// What a selection on the open wheel does. Owner thread.

/// Turns to the previous (0) or next (1) wheel, wrapping, recomputes the hovered field and repaints.
void turnPage(std::int32_t arrow);

/// Acts on what the virtual cursor is on: turns the page, or closes the wheel and runs the field.
void selectUnderCursor();

} // namespace rotika
