#include "files/key_names.h"
#include "files_support.h"
#include "platform/keyboard_layout.h"

namespace {

KeyCode keyboardKey(std::uint16_t vk, std::u16string text, bool extended = false) {
    KeyCode key;
    key.vk = vk;
    key.extended = extended;
    key.valid = true;
    key.text = std::move(text);
    return key;
}

KeyCode mouseKey(std::uint32_t button, std::u16string text) {
    KeyCode key;
    key.isMouse = true;
    key.mouseButton = button;
    key.valid = true;
    key.text = std::move(text);
    return key;
}

KeyCode unknownKey(std::u16string text) {
    KeyCode key;
    key.text = std::move(text);
    return key;
}

} // namespace

TEST(FilesKeys, ReadsEveryToken) {
    const std::pair<std::u16string, KeyCode> cases[] = {
        {u"x", keyboardKey(0x58, u"x")},
        {u"X", keyboardKey(0x58, u"X")},
        {u"  x  ", keyboardKey(0x58, u"x")},
        {u"\v\f\r\n\tA ", keyboardKey(0x41, u"A")},
        {u"5", keyboardKey(0x35, u"5")},
        {u"f", keyboardKey(0x46, u"f")},
        {u"F5", keyboardKey(0x74, u"F5")},
        {u"f1", keyboardKey(0x70, u"f1")},
        {u"F24", keyboardKey(0x87, u"F24")},
        {u"f1x", keyboardKey(0x70, u"f1x")},
        {u"f2y", keyboardKey(0x71, u"f2y")},
        {u"f09", keyboardKey(0x78, u"f09")},
        {u"space", keyboardKey(0x20, u"space")},
        {u"SPACJA", keyboardKey(0x20, u"SPACJA")},
        {u"Enter", keyboardKey(0x0D, u"Enter")},
        {u"tab", keyboardKey(0x09, u"tab")},
        {u"esc", keyboardKey(0x1B, u"esc")},
        {u"escape", keyboardKey(0x1B, u"escape")},
        {u"capslock", keyboardKey(0x14, u"capslock")},
        {u"caps", keyboardKey(0x14, u"caps")},
        {u"backspace", keyboardKey(0x08, u"backspace")},
        {u"shift", keyboardKey(0x10, u"shift")},
        {u"ctrl", keyboardKey(0x11, u"ctrl")},
        {u"alt", keyboardKey(0x12, u"alt")},
        {u"up", keyboardKey(0x26, u"up", true)},
        {u"down", keyboardKey(0x28, u"down", true)},
        {u"left", keyboardKey(0x25, u"left", true)},
        {u"right", keyboardKey(0x27, u"right", true)},
        {u"insert", keyboardKey(0x2D, u"insert", true)},
        {u"delete", keyboardKey(0x2E, u"delete", true)},
        {u"home", keyboardKey(0x24, u"home", true)},
        {u"end", keyboardKey(0x23, u"end", true)},
        {u"pageup", keyboardKey(0x21, u"pageup", true)},
        {u"pagedown", keyboardKey(0x22, u"pagedown", true)},
        {u"win", keyboardKey(0x5B, u"win", true)},
        {u"printscreen", keyboardKey(0x2C, u"printscreen", true)},
        {u"prtsc", keyboardKey(0x2C, u"prtsc", true)},
        {u"volumeup", keyboardKey(0xAF, u"volumeup", true)},
        {u"volumedown", keyboardKey(0xAE, u"volumedown", true)},
        {u"volumemute", keyboardKey(0xAD, u"volumemute", true)},
        {u"playpause", keyboardKey(0xB3, u"playpause", true)},
        {u"nexttrack", keyboardKey(0xB0, u"nexttrack", true)},
        {u"prevtrack", keyboardKey(0xB1, u"prevtrack", true)},
        {u"LMB", mouseKey(0, u"LMB")},
        {u"lpm", mouseKey(0, u"lpm")},
        {u"rmb", mouseKey(1, u"rmb")},
        {u"ppm", mouseKey(1, u"ppm")},
        {u"mmb", mouseKey(2, u"mmb")},
        {u"mpm", mouseKey(2, u"mpm")},
        {u"mb4", mouseKey(3, u"mb4")},
        {u"Mouse4", mouseKey(3, u"Mouse4")},
        {u"mb5", mouseKey(4, u"mb5")},
        {u"mouse5", mouseKey(4, u"mouse5")},
        {u"", unknownKey(u"")},
        {u"\t", unknownKey(u"")},
        {u"   ", unknownKey(u"")},
        {u"f0", unknownKey(u"f0")},
        {u"F25", unknownKey(u"F25")},
        {u"f99", unknownKey(u"f99")},
        {u"f12x", unknownKey(u"f12x")},
        {u"f-1", unknownKey(u"f-1")},
        {u"fx", unknownKey(u"fx")},
        {u"del", unknownKey(u"del")},
        {u"page up", unknownKey(u"page up")},
        {u" Nie ma ", unknownKey(u"Nie ma")},
        {u"\u00A0x", unknownKey(u"\u00A0x")},
        {u"55", unknownKey(u"55")},
        {std::u16string(u"x\0", 2), unknownKey(std::u16string(u"x\0", 2))},
    };
    for (const auto& [token, expected] : cases) {
        EXPECT_EQ(parseKeyCode(token), expected) << utf8FromUtf16(token);
    }
}

TEST_F(FilesTest, OtherSingleCharactersAreLookedUpOnTheLayoutAsWritten) {
    EXPECT_EQ(parseKeyCode(u"!"), keyboardKey(0x31, u"!")); // shift is dropped
    EXPECT_EQ(parseKeyCode(u"ą"), keyboardKey(0x41, u"ą"));
    EXPECT_EQ(parseKeyCode(u"я"), unknownKey(u"я"));
    EXPECT_EQ(parseKeyCode(u"\xD83D"), unknownKey(u"\xD83D"));

    setSimulatedLayoutKey(u'ü', 0xDB);
    setSimulatedLayoutKey(u'Ü', noVirtualKey);
    setSimulatedLayoutKey(u'7', 0x99);
    EXPECT_EQ(parseKeyCode(u"ü"), keyboardKey(0xDB, u"ü"));
    EXPECT_EQ(parseKeyCode(u"Ü"), unknownKey(u"Ü"));
    EXPECT_EQ(parseKeyCode(u"7"), keyboardKey(0x37, u"7"));
}
