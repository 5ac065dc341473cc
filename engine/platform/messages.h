#pragma once

#include "base/window_handle.h"

#include <cstdint>

namespace rotika {

/// Receives one message posted to a window, on the owner thread.
using MessageHandler = void (*)(std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam) noexcept;

/// Queues a message for the handler of one of this process's windows and returns at once. Messages of one
/// thread arrive in order. False when it could not be queued: the caller then still owns a payload. Any
/// thread.
bool postWindowMessage(WindowHandle window, std::uint32_t message, std::uintptr_t wParam = 0,
                       std::intptr_t lParam = 0);

} // namespace rotika
