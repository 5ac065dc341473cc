#pragma once

#include <cstdint>

namespace rotika {

// Selection on the open wheel. Owner thread.

/// Turns to the previous (0) or next (1) wheel, wrapping, recomputes the hovered field and repaints.
void turnPage(std::int32_t arrow);

/// Selects what is under the virtual cursor: turns the page, or closes the wheel and runs the field.
void selectUnderCursor();

} // namespace rotika
