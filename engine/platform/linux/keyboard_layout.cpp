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
    char16_t character; // which the key types when it is pressed twice or before a space
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

/// What a keysym stands for, dead or not; 0 for none.
char32_t characterOf(KeySym keysym) {
    const auto* dead = std::ranges::find(deadKeys, keysym, &DeadKey::keysym);
    return dead != std::end(deadKeys) ? dead->character
                                      : xkb_keysym_to_utf32(static_cast<xkb_keysym_t>(keysym));
}

/// The keys and the symbols of all their groups.
class KeyMap {
public:
    explicit KeyMap(Display* display)
        : map(XkbGetMap(display, XkbKeyTypesMask | XkbKeySymsMask, XkbUseCoreKbd)) {}
    ~KeyMap() {
        if (map != nullptr)
            XkbFreeKeyboard(map, 0, 1);
    }
    KeyMap(const KeyMap&) = delete;
    KeyMap& operator=(const KeyMap&) = delete;

    int firstCode() const { return map == nullptr ? 1 : map->min_key_code; }
    int lastCode() const { return map == nullptr ? 0 : map->max_key_code; }

    /// A key may have fewer groups than the keyboard: its groups then wrap around.
    KeySym keysymAt(int code, int group, int level) const {
        const auto key = static_cast<KeyCode>(code);
        const int groupCount = XkbKeyNumGroups(map, key);
        if (groupCount == 0)
            return NoSymbol;
        const int own = group % groupCount;
        return level < XkbKeyGroupWidth(map, key, own) ? XkbKeySymEntry(map, key, level, own) : NoSymbol;
    }

private:
    XkbDescPtr map;
};

} // namespace

std::uint16_t virtualKeyOfCharacter(char16_t character) {
    Display* display = ownerDisplay();
    if (display == nullptr)
        return noVirtualKey;
    XkbStateRec state{};
    XkbGetState(display, XkbUseCoreKbd, &state);
    const KeyMap keys(display);
    for (int level = 0; level < 4; ++level) {
        for (int code = keys.firstCode(); code <= keys.lastCode(); ++code) {
            const KeySym keysym = keys.keysymAt(code, state.group, level);
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
