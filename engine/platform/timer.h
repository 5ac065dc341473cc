#pragma once

#include "base/window_handle.h"

#include <cstdint>

namespace rotika {

/// Calls `tick` on the owner thread every `periodMs` until stopped; one timer a window. A tick that comes
/// late is not made up for.
void startWindowTimer(WindowHandle window, std::uint32_t periodMs, void (*tick)() noexcept);
void stopWindowTimer(WindowHandle window);

} // namespace rotika
