#pragma once

#include <cstdint>

namespace rotika {

inline constexpr std::uint32_t wheelTickPeriodMs = 15;

/// One tick of the open wheel: motion or gaze, hover, dwell, and a repaint if anything changed. Owner thread.
void tickWheel() noexcept;

/// Accumulates raw mouse motion for the next tick. Owner thread.
void addRawMotion(std::int32_t dx, std::int32_t dy) noexcept;

} // namespace rotika
