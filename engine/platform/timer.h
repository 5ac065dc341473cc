#pragma once

#include "base/window_handle.h"

#include <cstdint>

namespace rotika {

/// Calls `tick` on the owner thread every `periodMs` until stopped; one timer per window. Missed
/// ticks are not repeated.
void startWindowTimer(WindowHandle window, std::uint32_t periodMs, void (*tick)() noexcept);
void stopWindowTimer(WindowHandle window);

} // namespace rotika
