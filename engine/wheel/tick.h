#pragma once

#include <cstdint>

inline constexpr std::uint32_t wheelTickPeriodMs = 15;

/// One tick of the open wheel: motion or gaze, hover, dwell, and a repaint if anything changed. Owner thread.
void tickWheel() noexcept;

/// Adds raw mouse motion for the next tick.
void addRawMotion(std::int32_t dx, std::int32_t dy) noexcept;

/// Acts on what the virtual cursor is on: turns the page, or closes the wheel and runs the field.
void selectUnderCursor();
