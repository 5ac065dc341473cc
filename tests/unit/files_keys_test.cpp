#include "files/key_names.h"
#include "files_support.h"
#include "platform/keyboard_layout.h"

namespace {

KeyCode keyboardKey(std::uint16_t vk, const std::u16string& text, bool extended = false) {
    return {.vk = vk, .extended = extended, .valid = true, .text = text};
}

KeyCode unknownKey(const std::u16string& text) {
    return {.text = text};
}

} // namespace

TEST(FilesKeys, ReadsEveryName) {
    const std::pair<std::u16string, std::uint16_t> keys[] = {
        {u"x", 0x58},        {u"X", 0x58},     {u"5", 0x35},         {u"f", 0x46},     {u"F5", 0x74},
        {u"f1", 0x70},       {u"F24", 0x87},   {u"f1x", 0x70},       {u"f09", 0x78},   {u"space", 0x20},
        {u"SPACJA", 0x20},   {u"Enter", 0x0D}, {u"tab", 0x09},       {u"esc", 0x1B},   {u"escape", 0x1B},
        {u"capslock", 0x14}, {u"caps", 0x14},  {u"backspace", 0x08}, {u"shift", 0x10}, {u"ctrl", 0x11},
        {u"alt", 0x12}};
    for (const auto& [token, vk] : keys)
        EXPECT_EQ(parseKeyCode(token), keyboardKey(vk, token)) << utf8FromUtf16(token);
    const std::pair<std::u16string, std::uint16_t> extendedKeys[] = {
        {u"up", 0x26},          {u"down", 0x28},      {u"left", 0x25},       {u"right", 0x27},
        {u"insert", 0x2D},      {u"delete", 0x2E},    {u"home", 0x24},       {u"end", 0x23},
        {u"pageup", 0x21},      {u"pagedown", 0x22},  {u"win", 0x5B},        {u"prtsc", 0x2C},
        {u"printscreen", 0x2C}, {u"volumeup", 0xAF},  {u"volumedown", 0xAE}, {u"volumemute", 0xAD},
        {u"playpause", 0xB3},   {u"nexttrack", 0xB0}, {u"prevtrack", 0xB1}};
    for (const auto& [token, vk] : extendedKeys)
        EXPECT_EQ(parseKeyCode(token), keyboardKey(vk, token, true)) << utf8FromUtf16(token);
    const std::pair<std::u16string, std::uint32_t> buttons[] = {
        {u"LMB", 0}, {u"lpm", 0}, {u"rmb", 1},    {u"ppm", 1}, {u"mmb", 2},
        {u"mpm", 2}, {u"mb4", 3}, {u"Mouse4", 3}, {u"mb5", 4}, {u"mouse5", 4}};
    for (const auto& [token, button] : buttons) {
        const KeyCode expected{.isMouse = true, .mouseButton = button, .valid = true, .text = token};
        EXPECT_EQ(parseKeyCode(token), expected) << utf8FromUtf16(token);
    }
    for (const std::u16string token :
         {u"", u"f0", u"F25", u"f99", u"f12x", u"f-1", u"fx", u"del", u"page up", u"\u00A0x", u"55"})
        EXPECT_EQ(parseKeyCode(token), unknownKey(token)) << utf8FromUtf16(token);
}

TEST_F(FilesTest, KeyNamesLoseTheBlanksAroundThem) {
    EXPECT_EQ(parseKeyCode(u"\v\f\r\n\tA "), keyboardKey(0x41, u"A"));
    EXPECT_EQ(parseKeyCode(u" Nie ma "), unknownKey(u"Nie ma"));
    EXPECT_EQ(parseKeyCode(u"\t "), unknownKey(u""));
}

TEST_F(FilesTest, OtherSingleCharactersAreLookedUpOnTheLayoutAsWritten) {
    EXPECT_EQ(parseKeyCode(u"!"), keyboardKey(0x31, u"!")); // shift is dropped
    EXPECT_EQ(parseKeyCode(u"ą"), keyboardKey(0x41, u"ą"));
    EXPECT_EQ(parseKeyCode(u"я"), unknownKey(u"я"));
    EXPECT_EQ(parseKeyCode(u"\xD83D"), unknownKey(u"\xD83D"));
    setSimulatedLayoutKey(u'ü', 0xDB);
    setSimulatedLayoutKey(u'7', 0x99);
    EXPECT_EQ(parseKeyCode(u"ü"), keyboardKey(0xDB, u"ü"));
    EXPECT_EQ(parseKeyCode(u"Ü"), unknownKey(u"Ü"));
    EXPECT_EQ(parseKeyCode(u"7"), keyboardKey(0x37, u"7"));
}
