#pragma once

#include <cstdint>

namespace rotika {

/// MsgVoiceCommand, MsgVoiceField and MsgVoiceFunction: does what was said. While the session is locked it
/// does nothing but wake the screen. Owner thread.
void onSpoken(std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam);

} // namespace rotika
