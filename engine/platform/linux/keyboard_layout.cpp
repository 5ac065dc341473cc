#include "platform/keyboard_layout.h"

#include "platform/linux/connection.h"
#include "platform/linux/key_positions.h"

#include <xkbcommon/xkbcommon.h>

#include <algorithm>

namespace rotika {

namespace {

// Win32's shift states of the four levels of a key: none, Shift, AltGr (which is Ctrl and Alt), AltGr and
// Shift.
constexpr std::uint16_t shiftStates[] = {0, 1, 6, 7};

struct DeadKey {
    KeySym keysym;
    char16_t character; // typed when the key is pressed twice or before a space
};

constexpr DeadKey deadKeys[] = {
    {XK_dead_grave, u'`'},          {XK_dead_acute, u'\u00B4'},
    {XK_dead_circumflex, u'^'},     {XK_dead_tilde, u'~'},
    {XK_dead_macron, u'\u00AF'},    {XK_dead_breve, u'\u02D8'},
    {XK_dead_abovedot, u'\u02D9'},  {XK_dead_diaeresis, u'\u00A8'},
    {XK_dead_abovering, u'\u02DA'}, {XK_dead_doubleacute, u'\u02DD'},
    {XK_dead_caron, u'\u02C7'},     {XK_dead_cedilla, u'\u00B8'},
    {XK_dead_ogonek, u'\u02DB'},
};

/// The character of a keysym, dead keys included; 0 for none.
char32_t characterOf(KeySym keysym) {
    const auto* dead = std::ranges::find(deadKeys, keysym, &DeadKey::keysym);
    return dead != std::end(deadKeys) ? dead->character
                                      : xkb_keysym_to_utf32(static_cast<xkb_keysym_t>(keysym));
}

} // namespace

std::uint16_t virtualKeyOfCharacter(char16_t character) {
    Display* display = ownerDisplay();
    if (display == nullptr)
        return noVirtualKey;
    const int group = activeGroup(display);
    int first = 0;
    int last = 0;
    XDisplayKeycodes(display, &first, &last);
    for (int level = 0; level < 4; ++level) {
        for (int code = first; code <= last; ++code) {
            const KeySym keysym = keysymAt(display, static_cast<KeyCode>(code), group, level);
            if (keysym == NoSymbol || characterOf(keysym) != character)
                continue;
            const std::uint16_t virtualKey = virtualKeyOfKeycode(display, static_cast<KeyCode>(code));
            if (virtualKey != 0)
                return static_cast<std::uint16_t>(shiftStates[level] << 8 | virtualKey);
        }
    }
    return noVirtualKey;
}

} // namespace rotika
