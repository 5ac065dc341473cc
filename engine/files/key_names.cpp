#include "files/key_names.h"

#include "base/text.h"
#include "platform/keyboard_layout.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace rotika {

namespace {

struct ButtonName {
    std::u16string_view token;
    std::uint32_t button;
};

struct KeyName {
    std::u16string_view token;
    std::uint16_t vk;
    bool extended;
};

constexpr std::array buttonNames{
    ButtonName{u"lmb", 0}, ButtonName{u"lpm", 0},    ButtonName{u"rmb", 1}, ButtonName{u"ppm", 1},
    ButtonName{u"mmb", 2}, ButtonName{u"mpm", 2},    ButtonName{u"mb4", 3}, ButtonName{u"mouse4", 3},
    ButtonName{u"mb5", 4}, ButtonName{u"mouse5", 4},
};

constexpr std::array keyNames{
    KeyName{u"space", 0x20, false},     KeyName{u"spacja", 0x20, false},
    KeyName{u"enter", 0x0D, false},     KeyName{u"tab", 0x09, false},
    KeyName{u"esc", 0x1B, false},       KeyName{u"escape", 0x1B, false},
    KeyName{u"capslock", 0x14, false},  KeyName{u"caps", 0x14, false},
    KeyName{u"backspace", 0x08, false}, KeyName{u"shift", 0x10, false},
    KeyName{u"ctrl", 0x11, false},      KeyName{u"alt", 0x12, false},
    KeyName{u"up", 0x26, true},         KeyName{u"down", 0x28, true},
    KeyName{u"left", 0x25, true},       KeyName{u"right", 0x27, true},
    KeyName{u"insert", 0x2D, true},     KeyName{u"delete", 0x2E, true},
    KeyName{u"home", 0x24, true},       KeyName{u"end", 0x23, true},
    KeyName{u"pageup", 0x21, true},     KeyName{u"pagedown", 0x22, true},
    KeyName{u"win", 0x5B, true},        KeyName{u"printscreen", 0x2C, true},
    KeyName{u"prtsc", 0x2C, true},      KeyName{u"volumeup", 0xAF, true},
    KeyName{u"volumedown", 0xAE, true}, KeyName{u"volumemute", 0xAD, true},
    KeyName{u"playpause", 0xB3, true},  KeyName{u"nexttrack", 0xB0, true},
    KeyName{u"prevtrack", 0xB1, true},
};

std::u16string trimmed(std::u16string text) {
    const auto isBlank = [](char16_t unit) { return isAsciiSpace(unit); };
    text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), isBlank));
    text.erase(std::find_if_not(text.rbegin(), text.rend(), isBlank).base(), text.end());
    return text;
}

/// The shift state that the layout returns is ignored, so "!" means the key that types it.
void readCharacter(char16_t character, KeyCode& key) {
    const char16_t upper = asciiUpper(character);
    if (isAsciiDigit(upper) || (upper >= u'A' && upper <= u'Z')) {
        key.vk = upper;
        key.valid = true;
        return;
    }
    const std::uint16_t answer = virtualKeyOfCharacter(character);
    if (answer != noVirtualKey) {
        key.vk = answer & 0xFF;
        key.valid = true;
    }
}

bool looksLikeFunctionKey(std::u16string_view name) {
    return name.size() <= 3 && name[0] == u'f' && isAsciiDigit(name[1]);
}

/// A third character that is not a digit is ignored: "f1x" is F1, for compatibility with existing files.
void readFunctionKey(std::u16string_view name, KeyCode& key) {
    constexpr int lastFunctionKey = 24;
    constexpr int beforeF1 = 0x6F;
    int number = name[1] - u'0';
    if (name.size() == 3 && isAsciiDigit(name[2])) {
        number = number * 10 + (name[2] - u'0');
    }
    if (number >= 1 && number <= lastFunctionKey) {
        key.vk = static_cast<std::uint16_t>(beforeF1 + number);
        key.valid = true;
    }
}

void readName(std::u16string_view name, KeyCode& key) {
    const auto isNamed = [name](const auto& row) { return row.token == name; };
    if (const auto* row = std::find_if(buttonNames.begin(), buttonNames.end(), isNamed);
        row != buttonNames.end()) {
        key.isMouse = true;
        key.mouseButton = row->button;
        key.valid = true;
        return;
    }
    if (looksLikeFunctionKey(name)) {
        readFunctionKey(name, key);
        return;
    }
    if (const auto* row = std::find_if(keyNames.begin(), keyNames.end(), isNamed); row != keyNames.end()) {
        key.vk = row->vk;
        key.extended = row->extended;
        key.valid = true;
    }
}

} // namespace

KeyCode parseKeyCode(std::u16string text) {
    KeyCode key;
    key.text = trimmed(std::move(text));
    if (key.text.size() == 1) {
        readCharacter(key.text[0], key);
    } else if (!key.text.empty()) {
        readName(asciiLowered(key.text), key);
    }
    return key;
}

} // namespace rotika
