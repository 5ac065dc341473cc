#pragma once

#include "platform/windows/windows_api.h"

namespace rotika {

/// Handles WM_TIMER of `window`. Owner thread.
void windowTimerElapsed(HWND window, WPARAM timerId) noexcept;

} // namespace rotika
