#include "platform/linux/key_positions.h"

#include <X11/XF86keysym.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

namespace rotika {

namespace {

struct Position {
    std::uint16_t virtualKey;
    std::string_view name; // XKB key name
};

// Digits and punctuation: the same position on every layout, as with Win32's codes.
constexpr Position fixedPositions[] = {
    {'1', "AE01"},  {'2', "AE02"},  {'3', "AE03"},  {'4', "AE04"},  {'5', "AE05"},  {'6', "AE06"},
    {'7', "AE07"},  {'8', "AE08"},  {'9', "AE09"},  {'0', "AE10"},  {0xBD, "AE11"}, {0xBB, "AE12"},
    {0xC0, "TLDE"}, {0xDB, "AD11"}, {0xDD, "AD12"}, {0xDC, "BKSL"}, {0xBA, "AC10"}, {0xDE, "AC11"},
    {0xBC, "AB08"}, {0xBE, "AB09"}, {0xBF, "AB10"}, {0xE2, "LSGT"},
};

// Where a layout has no Latin letters, the letters are those of the American keyboard.
constexpr Position letterPositions[] = {
    {'Q', "AD01"}, {'W', "AD02"}, {'E', "AD03"}, {'R', "AD04"}, {'T', "AD05"}, {'Y', "AD06"}, {'U', "AD07"},
    {'I', "AD08"}, {'O', "AD09"}, {'P', "AD10"}, {'A', "AC01"}, {'S', "AC02"}, {'D', "AC03"}, {'F', "AC04"},
    {'G', "AC05"}, {'H', "AC06"}, {'J', "AC07"}, {'K', "AC08"}, {'L', "AC09"}, {'Z', "AB01"}, {'X', "AB02"},
    {'C', "AB03"}, {'V', "AB04"}, {'B', "AB05"}, {'N', "AB06"}, {'M', "AB07"},
};

struct NamedKey {
    std::uint16_t virtualKey;
    KeySym keysym;
};

constexpr NamedKey namedKeys[] = {
    {0x08, XK_BackSpace},
    {0x09, XK_Tab},
    {0x0D, XK_Return},
    {0x10, XK_Shift_L},
    {0x11, XK_Control_L},
    {0x12, XK_Alt_L},
    {0x14, XK_Caps_Lock},
    {0x1B, XK_Escape},
    {0x20, XK_space},
    {0x21, XK_Prior},
    {0x22, XK_Next},
    {0x23, XK_End},
    {0x24, XK_Home},
    {0x25, XK_Left},
    {0x26, XK_Up},
    {0x27, XK_Right},
    {0x28, XK_Down},
    {0x2C, XK_Print},
    {0x2D, XK_Insert},
    {0x2E, XK_Delete},
    {0x5B, XK_Super_L},
    {0xAD, XF86XK_AudioMute},
    {0xAE, XF86XK_AudioLowerVolume},
    {0xAF, XF86XK_AudioRaiseVolume},
    {0xB0, XF86XK_AudioNext},
    {0xB1, XF86XK_AudioPrev},
    {0xB3, XF86XK_AudioPlay},
};

constexpr std::uint16_t functionKeyBase = 0x6F; // F1 is 0x70
constexpr std::uint16_t functionKeyCount = 24;
constexpr std::uint16_t firstNamedFunctionKey =
    13; // FK13: the keys below it have the same keysym on every layout

/// The names of all keys, read from the server for each use because keyboards can be plugged in at any
/// moment. (libxkbcommon finds keys by name only in a keymap, which it reads from a server through
/// xkbcommon-x11.)
class KeyNames {
public:
    explicit KeyNames(Display* display) : description(XkbGetMap(display, 0, XkbUseCoreKbd)) {
        if (description != nullptr && XkbGetNames(display, XkbKeyNamesMask, description) != 0)
            description->names = nullptr;
    }
    ~KeyNames() {
        if (description != nullptr)
            XkbFreeKeyboard(description, 0, 1);
    }
    KeyNames(const KeyNames&) = delete;
    KeyNames& operator=(const KeyNames&) = delete;

    KeyCode keycodeNamed(std::string_view name) const {
        if (description == nullptr || description->names == nullptr)
            return 0;
        for (int code = description->min_key_code; code <= description->max_key_code; ++code)
            if (nameOf(static_cast<KeyCode>(code)) == name)
                return static_cast<KeyCode>(code);
        return 0;
    }

    std::string_view nameOf(KeyCode code) const {
        if (description == nullptr || description->names == nullptr)
            return {};
        const char* name = description->names->keys[code].name; // four bytes, not always terminated
        return {name, strnlen(name, XkbKeyNameLength)};
    }

private:
    XkbDescPtr description;
};

/// The first key whose unshifted keysym on the active layout is the given one.
KeyCode keycodeTyping(Display* display, KeySym keysym) {
    const int group = activeGroup(display);
    int first = 0;
    int last = 0;
    XDisplayKeycodes(display, &first, &last);
    for (int code = first; code <= last; ++code)
        if (keysymAt(display, static_cast<KeyCode>(code), group, 0) == keysym)
            return static_cast<KeyCode>(code);
    return 0;
}

template <std::size_t count>
const Position* findPosition(const Position (&positions)[count], std::uint16_t virtualKey) {
    const auto* found = std::ranges::find(positions, virtualKey, &Position::virtualKey);
    return found == std::end(positions) ? nullptr : found;
}

template <std::size_t count>
std::uint16_t virtualKeyAt(const Position (&positions)[count], std::string_view name) {
    const auto* found = std::ranges::find(positions, name, &Position::name);
    return found == std::end(positions) ? std::uint16_t{0} : found->virtualKey;
}

bool isLetter(std::uint16_t virtualKey) {
    return virtualKey >= 'A' && virtualKey <= 'Z';
}

KeyCode keycodeOfLetter(Display* display, const KeyNames& names, std::uint16_t virtualKey) {
    const auto lowerCase = KeySym{XK_a} + virtualKey - 'A';
    if (const KeyCode typed = keycodeTyping(display, lowerCase); typed != 0)
        return typed;
    return names.keycodeNamed(findPosition(letterPositions, virtualKey)->name);
}

/// The letter that the key types unshifted, as its virtual key; 0 if it types none.
std::uint16_t letterTypedBy(Display* display, KeyCode code) {
    const KeySym keysym = keysymAt(display, code, activeGroup(display), 0);
    return keysym >= XK_a && keysym <= XK_z ? static_cast<std::uint16_t>(keysym - XK_a + 'A')
                                            : std::uint16_t{0};
}

/// If a letter occupies the position, its virtual key belongs to the position where the American keyboard has
/// that letter, which another letter may occupy in turn: 26 letters, so at most 26 steps.
KeyCode keycodeOfPosition(Display* display, const KeyNames& names, const Position& position) {
    KeyCode code = names.keycodeNamed(position.name);
    for (std::size_t i = 0; i < std::size(letterPositions); ++i) {
        const std::uint16_t letter = letterTypedBy(display, code);
        if (letter == 0)
            break;
        code = names.keycodeNamed(findPosition(letterPositions, letter)->name);
    }
    return code;
}

/// The reverse of keycodeOfPosition, for a letter's position that types no letter.
std::uint16_t punctuationMovedTo(Display* display, const KeyNames& names, std::string_view name) {
    for (std::size_t i = 0; i < std::size(letterPositions); ++i) {
        if (const std::uint16_t fixed = virtualKeyAt(fixedPositions, name); fixed != 0)
            return fixed;
        const std::uint16_t letter = virtualKeyAt(letterPositions, name);
        if (letter == 0)
            return 0;
        name = names.nameOf(keycodeOfLetter(display, names, letter));
    }
    return 0;
}

} // namespace

int activeGroup(Display* display) {
    XkbStateRec state{};
    XkbGetState(display, XkbUseCoreKbd, &state);
    return state.group;
}

KeySym keysymAt(Display* display, KeyCode code, int group, int level) {
    const bool hasGroup = XkbKeycodeToKeysym(display, code, group, 0) != NoSymbol;
    return XkbKeycodeToKeysym(display, code, hasGroup ? group : 0, level);
}

KeySym keysymOfVirtualKey(std::uint16_t virtualKey) {
    if (virtualKey > functionKeyBase && virtualKey <= functionKeyBase + functionKeyCount)
        return XK_F1 + static_cast<KeySym>(virtualKey - functionKeyBase - 1);
    const auto* found = std::ranges::find(namedKeys, virtualKey, &NamedKey::virtualKey);
    return found == std::end(namedKeys) ? NoSymbol : found->keysym;
}

KeyCode keycodeOfVirtualKey(Display* display, std::uint16_t virtualKey) {
    if (isLetter(virtualKey))
        return keycodeOfLetter(display, KeyNames(display), virtualKey);
    if (const Position* position = findPosition(fixedPositions, virtualKey))
        return keycodeOfPosition(display, KeyNames(display), *position);
    const KeySym keysym = keysymOfVirtualKey(virtualKey);
    return keysym == NoSymbol ? KeyCode{0} : keycodeTyping(display, keysym);
}

KeyCode keycodeOfHotKey(Display* display, std::uint16_t virtualKey) {
    if (virtualKey >= functionKeyBase + firstNamedFunctionKey &&
        virtualKey <= functionKeyBase + functionKeyCount) {
        const KeyCode named =
            KeyNames(display).keycodeNamed("FK" + std::to_string(virtualKey - functionKeyBase));
        if (named != 0)
            return named;
    }
    return keycodeOfVirtualKey(display, virtualKey);
}

std::uint16_t virtualKeyOfKeycode(Display* display, KeyCode keycode) {
    if (const std::uint16_t letter = letterTypedBy(display, keycode); letter != 0)
        return letter;
    const KeyNames names(display);
    const std::string_view name = names.nameOf(keycode);
    const KeySym keysym = keysymAt(display, keycode, activeGroup(display), 0);
    const auto* named = std::ranges::find(namedKeys, keysym, &NamedKey::keysym);
    return named != std::end(namedKeys) ? named->virtualKey : punctuationMovedTo(display, names, name);
}

} // namespace rotika
