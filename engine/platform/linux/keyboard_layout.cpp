#include "platform/keyboard_layout.h"

#include "platform/linux/connection.h"
#include "platform/linux/key_positions.h"

#include <xkbcommon/xkbcommon.h>

namespace {

// Win32's shift states of the four levels of a key: none, Shift, AltGr (which is Ctrl and Alt), AltGr and
// Shift.
constexpr std::uint16_t shiftStates[] = {0, 1, 6, 7};

} // namespace

std::uint16_t virtualKeyOfCharacter(char16_t character) {
    Display* display = ownerDisplay();
    if (display == nullptr)
        return noVirtualKey;
    XkbStateRec state{};
    XkbGetState(display, XkbUseCoreKbd, &state);
    int first = 0;
    int last = 0;
    XDisplayKeycodes(display, &first, &last);
    for (int level = 0; level < 4; ++level) {
        for (int code = first; code <= last; ++code) {
            const KeySym keysym = XkbKeycodeToKeysym(display, static_cast<KeyCode>(code), state.group, level);
            if (keysym == NoSymbol || xkb_keysym_to_utf32(static_cast<xkb_keysym_t>(keysym)) != character)
                continue;
            const std::uint16_t virtualKey = virtualKeyOfKeycode(display, static_cast<KeyCode>(code));
            if (virtualKey != 0)
                return static_cast<std::uint16_t>(shiftStates[level] << 8 | virtualKey);
        }
    }
    return noVirtualKey;
}
