#include "core/text.h"

#include <gtest/gtest.h>

#include <utility>

using namespace std::string_literals;

TEST(FilesText, Utf8BecomesUtf16WithOneReplacementForEachIllFormedPart) {
    const std::pair<std::string, std::u16string> cases[] = {
        {"a\0b"s, u"a\0b"s},
        {"Ko\xC5\x82o \xE2\x80\x94", u"Koło —"},
        {"\xF0\x9F\x98\x80", u"\xD83D\xDE00"},
        {"\xF4\x8F\xBF\xBF\xEF\xBF\xBF", u"\xDBFF\xDFFF\xFFFF"},
        {"\x80x", u"\xFFFDx"},                             // a continuation on its own
        {"\xC0\xAF", u"\xFFFD\xFFFD"},                     // overlong solidus
        {"\xE0\x9F\xBF", u"\xFFFD\xFFFD\xFFFD"},           // overlong in three bytes
        {"\xED\xA0\x80", u"\xFFFD\xFFFD\xFFFD"},           // an encoded surrogate
        {"\xF0\x8F\xBF\xBF", u"\xFFFD\xFFFD\xFFFD\xFFFD"}, // overlong in four bytes
        {"\xF4\x90\x80\x80", u"\xFFFD\xFFFD\xFFFD\xFFFD"}, // above the last plane
        {"\xF5\xFF", u"\xFFFD\xFFFD"},
        {"\xE2\x80x", u"\xFFFDx"},        // cut by another character
        {"\xF0\x9F\x98", u"\xFFFD"},      // cut by the end
        {"\xE2\x80\xC5\x82", u"\xFFFDł"}, // cut by the next sequence
    };
    for (const auto& [bytes, text] : cases)
        EXPECT_EQ(utf16FromUtf8(bytes), text) << testing::PrintToString(bytes);
}

TEST(FilesText, Utf16BecomesUtf8WithUnpairedSurrogatesReplaced) {
    const std::pair<std::u16string, std::string> cases[] = {
        {u"a\0b\x7F\x80\x7FF\x800"s, "a\0b\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80"s},
        {u"\xD83D\xDE00\xDBFF\xDFFF", "\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF"},
        {u"\xD83D", "\xEF\xBF\xBD"},
        {u"\xD83Dx", "\xEF\xBF\xBDx"},
        {u"\xDE00\xD83D\xD83D\xDE00", "\xEF\xBF\xBD\xEF\xBF\xBD\xF0\x9F\x98\x80"},
    };
    for (const auto& [text, bytes] : cases)
        EXPECT_EQ(utf8FromUtf16(text), bytes) << testing::PrintToString(text);
}

TEST(FilesText, LowersCutsAndCounts) {
    EXPECT_EQ(asciiLowered(u"@AZ[ PUŚĆ"), u"@az[ puŚĆ");
    EXPECT_EQ(cutTo(u"abc", 2), u"ab");
    EXPECT_EQ(cutTo(u"abc", 5), u"abc");
    EXPECT_EQ(decimalText(-2147483648LL), u"-2147483648");
}
