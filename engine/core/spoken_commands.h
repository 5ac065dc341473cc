#pragma once

#include <cstdint>

namespace rotika {

/// MsgVoiceCommand, MsgVoiceField and MsgVoiceFunction: executes the command. While the session is locked it
/// only wakes the screen. Owner thread.
void onVoiceMessage(std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam);

} // namespace rotika
