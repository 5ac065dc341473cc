#include "platform/keyboard_layout.h"

#include "platform/simulated/keyboard_layout.h"

#include <map>
#include <string_view>

namespace rotika {

namespace {

constexpr unsigned shift = 0x100;
constexpr unsigned altGr = 0x600;

using Layout = std::map<char16_t, std::uint16_t>;

struct LayoutKey {
    unsigned vk;
    char16_t plain;
    char16_t shifted;
};

constexpr LayoutKey punctuation[] = {
    {0x20, u' ', u' '}, {0x30, u'0', u')'},  {0x31, u'1', u'!'}, {0x32, u'2', u'@'}, {0x33, u'3', u'#'},
    {0x34, u'4', u'$'}, {0x35, u'5', u'%'},  {0x36, u'6', u'^'}, {0x37, u'7', u'&'}, {0x38, u'8', u'*'},
    {0x39, u'9', u'('}, {0xBA, u';', u':'},  {0xBB, u'=', u'+'}, {0xBC, u',', u'<'}, {0xBD, u'-', u'_'},
    {0xBE, u'.', u'>'}, {0xBF, u'/', u'?'},  {0xC0, u'`', u'~'}, {0xDB, u'[', u'{'}, {0xDC, u'\\', u'|'},
    {0xDD, u']', u'}'}, {0xDE, u'\'', u'"'},
};

/// These keys with the right Alt give the Polish letters.
constexpr std::u16string_view letterKeys = u"ACELNOSXZ";
constexpr std::u16string_view smallLetters = u"ąćęłńóśźż";
constexpr std::u16string_view capitalLetters = u"ĄĆĘŁŃÓŚŹŻ";

Layout polishProgrammers() {
    Layout layout;
    const auto put = [&layout](char16_t character, unsigned keyAndShift) {
        layout.emplace(character, static_cast<std::uint16_t>(keyAndShift));
    };
    for (const LayoutKey& key : punctuation) {
        put(key.plain, key.vk);
        put(key.shifted, key.vk | shift);
    }
    for (char16_t capital = u'A'; capital <= u'Z'; ++capital) {
        put(capital, capital | shift);
        put(static_cast<char16_t>(capital + 32), capital);
    }
    for (std::size_t i = 0; i < letterKeys.size(); ++i) {
        put(smallLetters[i], letterKeys[i] | altGr);
        put(capitalLetters[i], letterKeys[i] | altGr | shift);
    }
    return layout;
}

Layout currentLayout = polishProgrammers();

} // namespace

std::uint16_t virtualKeyOfCharacter(char16_t character) {
    const auto row = currentLayout.find(character);
    return row != currentLayout.end() ? row->second : noVirtualKey;
}

void setSimulatedLayoutKey(char16_t character, std::uint16_t keyAndShift) {
    currentLayout[character] = keyAndShift;
}

void resetSimulatedLayout() {
    currentLayout = polishProgrammers();
}

} // namespace rotika
