#pragma once

#include <cstdint>

namespace rotika {

inline constexpr std::uint32_t wheelTickPeriodMs = 15;

/// One tick of the open wheel: motion or gaze, hover, dwell, and a repaint if anything changed. Owner thread.
void tickWheel() noexcept;

/// Ends the gaze's control of the virtual cursor and its dwell, until nothing real has moved the cursor for a
/// while. Owner thread.
void noteRealMotion() noexcept;

/// Accumulates raw mouse motion for the next tick. Owner thread.
void addRawMotion(std::int32_t dx, std::int32_t dy) noexcept;

} // namespace rotika
