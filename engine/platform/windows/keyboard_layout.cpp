#include "platform/keyboard_layout.h"

#include "platform/windows/windows_api.h"

namespace rotika {

std::uint16_t virtualKeyOfCharacter(char16_t character) {
    // The system returns -1 for "no key", which is noVirtualKey as an unsigned number.
    return static_cast<std::uint16_t>(VkKeyScanW(static_cast<WCHAR>(character)));
}

} // namespace rotika
