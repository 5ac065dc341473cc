#pragma once

#include <cstdint>

namespace rotika {

// Messages posted to the engine's windows. On Windows the numbers are in the WM_APP range.
enum PrivateMessage : std::uint32_t {
    MsgTrayIcon = 0x8001,          // from the notification area; handled by the platform's main window
    MsgSelectUnderCursor = 0x8002, // wheel window: select what is under the virtual cursor
    MsgVoiceCommand = 0x8003,      // wParam: command id
    MsgVoiceField = 0x8004,        // wParam: wheel index, lParam: field index
    MsgElementsReady = 0x8005,     // lParam: owned scan result, or null
    MsgVoiceSkipped = 0x8006,      // lParam: owned std::u16string, or null
    MsgVoiceFunction = 0x8007,     // wParam: index into voiceActions
    MsgIconLoaded = 0x8008,        // lParam: owned IconCacheEntry
};

inline constexpr int toggleHotKeyId = 1;

} // namespace rotika
