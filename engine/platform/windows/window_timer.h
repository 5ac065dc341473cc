#pragma once

#include "platform/windows/windows_api.h"

namespace rotika {

/// The window procedure's share of a timer: WM_TIMER has arrived at `window`. Owner thread.
void windowTimerElapsed(HWND window, WPARAM timerId) noexcept;

} // namespace rotika
