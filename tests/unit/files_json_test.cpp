#include "engine_test.h"
#include "files/json_reader.h"

#include <sstream>

namespace {

std::string shown(const JsonValue& value) {
    std::ostringstream text;
    text.precision(17);
    for (const JsonValue& item : value.items)
        text << shown(item) << ",";
    for (const JsonMember& member : value.members)
        text << utf8FromUtf16(member.key) << ":" << shown(member.value) << ",";
    if (value.type == JsonType::Number)
        text << value.number + 0; // no minus before a zero
    const char* const opening[] = {"null", value.boolean ? "true" : "false", "", "'", "[", "{"};
    const char* const closing[] = {"", "", "", "'", "]", "}"};
    const auto type = static_cast<int>(value.type);
    return opening[type] + text.str() + utf8FromUtf16(value.text) + closing[type];
}

/// What the document means, or "!" if it is refused.
std::string read(const std::u16string& text) {
    JsonCursor cursor{text};
    JsonValue root;
    if (!parseValue(cursor, root))
        return "!";
    skipWhitespace(cursor);
    return cursor.pos == text.size() ? shown(root) : "!";
}

constexpr char documents[] = R"rows(
    {} -> {}  { "a" : 1 , "b" : [ true , false , null ], "a":"x" } -> {a:1,b:[true,false,null,],a:'x',}
    [[],{},[{}]] -> [[],{},[{},],]  [ [ ] ,{ } ,[{}]] -> [[],{},[{},],]
    # numbers, as far as they go
    0 -> 0  - -> 0  + -> 0  . -> 0  e -> 0  --5 -> 0  +-5 -> 0  -+5 -> 0  .e5 -> 0  1e-999 -> 0  0e999 -> 0
    1. -> 1  1-2 -> 1  1e -> 1  1e+ -> 1  -12.5 -> -12.5  -12.5.3 -> -12.5  007 -> 7  +7 -> 7  1e5e5 -> 100000
    1E+5 -> 100000  1e999 -> inf  1e99999999999999999999 -> inf  -1e999 -> -inf
    "\u0041\u017cÓ\uD83D\uDE00\ud83d" -> 'AżÓ😀�'
    # refused
    {}{} -> !  {"a":1} x -> !  ] -> !  {"a":1,} -> !  [1,] -> !  [,1] -> !  [,] -> !  {,} -> !  [true false] -> !
    {"a" 1} -> !  {"a":} -> !  {"a"} -> !  {a:1} -> !  {1:1} -> !  {} // comment -> !  { -> !  {"a" -> !
    {"a": -> !  {"a":1 -> !  {"a":1, -> !  {"a":1] -> !  [ -> !  [1 -> !  [1} -> !  tru -> !  True -> !  NULL -> !
    NaN -> !  nullx -> !  "a -> !  " -> !  "\ -> !  "\" -> !  "\x41" -> !  "\u00" -> !  "\ " -> !)rows";

} // namespace

TEST(FilesJson, WholeDocumentsAreReadLenientlyAndOthersRefused) {
    for (const auto& [text, meaning] : rowsOf(documents))
        EXPECT_EQ(read(utf16FromUtf8(text)), meaning) << text;
    const std::u16string tiny = u"0." + std::u16string(400, u'0') + u"1";
    // The four characters of an escape are taken whatever they are, and read as far as they are digits.
    const std::pair<std::u16string, std::string> others[] = {
        {u" { \r\n\t } ", "{}"},
        {tiny, "0"},
        {tiny + u"e401", "1"},
        {tiny + u"e999", "inf"},
        {std::u16string(400, u'9'), "inf"},
        {u"", "!"},
        {u" \t", "!"},
        {u"\uFEFF{}", "!"},
        {u"\u00A0{}", "!"},
        {u"[\v1]", "!"},
        {u"[\0]"s, "!"},
        {u"\"\\\"\\/\\\\\\b\\f\\n\\r\\traw\n\0\""s, "'\"/\\\b\f\n\r\traw\n\0'"s},
        {uR"("\uZZZZ")", "'\0'"s},
        {uR"("\u"]}"")", "'\0'"s},
        {uR"("\u12G4x")", "'\x12x'"},
        {uR"("\u 12Gx")", "'\x12x'"},
        {uR"("\u-001\u+0A1")", "'\uFFFF\u00A1'"}};
    for (const auto& [text, meaning] : others)
        EXPECT_EQ(read(text), meaning) << utf8FromUtf16(text);
}

TEST(FilesJson, MembersAreFoundIntegersTruncatedAndAnyNestingForgotten) {
    const std::u16string members = uR"({"b":1,"a":"x","a":2,"A":3})";
    JsonCursor cursor{members};
    JsonValue root;
    ASSERT_TRUE(parseValue(cursor, root));
    EXPECT_EQ(findMember(root, u"a"), &root.members.at(1).value) << "the first of two";
    EXPECT_EQ(findMember(root, u"a", JsonType::Number), nullptr);
    EXPECT_EQ(findMember(root, u"c"), nullptr);
    for (const auto& [number, integer] : rowsOf(R"(
        99.9 -> 99  -99.9 -> -99  2147483647.9 -> 2147483647  2147483648 -> -2147483648  -3e9 -> -2147483648
        inf -> -2147483648  nan -> -2147483648)"))
        EXPECT_EQ(std::to_string(integerOf(std::stod(number))), integer) << number;
    constexpr std::size_t depth = 300'000;
    EXPECT_EQ(read(std::u16string(depth, u'[')), "!");
    const std::u16string nested = std::u16string(depth, u'[') + std::u16string(depth, u']');
    JsonCursor deepCursor{nested};
    EXPECT_TRUE(parseValue(deepCursor, root));
    root = JsonValue(); // assignment destroys the old tree as well
}

TEST(FilesText, IllFormedPartsBecomeReplacementCharactersOnBothWays) {
    const std::pair<std::string, std::u16string> fromUtf8[] = {
        {"a\0Ko\xC5\x82o \xE2\x80\x94"s, u"a\0Koło —"s},
        {"\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF\xEF\xBF\xBF", u"\xD83D\xDE00\xDBFF\xDFFF\xFFFF"},
        {"\x80x\xF5\xFF", u"\xFFFDx\xFFFD\xFFFD"}, // a continuation on its own, bytes that begin nothing
        // overlong forms, an encoded surrogate, above the last plane
        {"\xC0\xAF|\xE0\x9F\xBF|\xF0\x8F\xBF\xBF",
         u"\xFFFD\xFFFD|\xFFFD\xFFFD\xFFFD|\xFFFD\xFFFD\xFFFD\xFFFD"},
        {"\xED\xA0\x80|\xF4\x90\x80\x80", u"\xFFFD\xFFFD\xFFFD|\xFFFD\xFFFD\xFFFD\xFFFD"},
        {"\xE2\x80x\xE2\x80\xC5\x82\xF0\x9F\x98",
         u"\xFFFDx\xFFFDł\xFFFD"}}; // cut by what follows and the end
    for (const auto& [bytes, text] : fromUtf8)
        EXPECT_EQ(utf16FromUtf8(bytes), text) << testing::PrintToString(bytes);
    EXPECT_EQ(utf8FromUtf16(u"a\0b\x7F\x80\x7FF\x800"s), "a\0b\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80"s);
    EXPECT_EQ(utf8FromUtf16(u"\xD83Dx\xDE00\xD83D\xDBFF\xDFFF\xD83D"),
              "\uFFFDx\uFFFD\uFFFD\xF4\x8F\xBF\xBF\uFFFD");
    EXPECT_EQ(asciiLowered(u"@AZ[ PUŚĆ"), u"@az[ puŚĆ");
}
