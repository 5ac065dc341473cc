#include "engine_test.h"
#include "files/json_reader.h"

#include <cmath>
#include <limits>
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

/// What the document means, or "refused".
std::string read(const std::u16string& text) {
    JsonCursor cursor{text};
    JsonValue root;
    if (!parseValue(cursor, root))
        return "refused";
    skipWhitespace(cursor);
    return cursor.pos == text.size() ? shown(root) : "refused";
}

} // namespace

TEST(FilesJson, WholeDocumentsAreReadLenientlyAndOthersRefused) {
    const std::u16string tiny = u"0." + std::u16string(400, u'0') + u"1";
    const std::pair<std::string, std::vector<std::u16string>> cases[] = {
        {"{}", {u"{}", u" { \r\n\t } "}},
        {"{a:1,b:[true,false,null,],a:'x',}", {uR"({ "a" : 1 , "b" : [ true , false , null ], "a":"x" }  )"}},
        {"[[],{},[{},],]", {u"[[],{},[{}]]", u"[ [ ] ,{ } ,[{}]]\r\n"}},
        // numbers, as far as they go
        {"0", {u"0", u"-", u"+", u".", u"e", u"--5", u"+-5", u"-+5", u".e5", u"1e-999", u"0e999", tiny}},
        {"1", {u"1.", u"1-2", u"1e", u"1e+", tiny + u"e401"}},
        {"-12.5", {u"-12.5", u"-12.5.3"}},
        {"7", {u"007", u"+7"}},
        {"100000", {u"1e5e5", u"1E+5"}},
        {"inf", {u"1e999", u"1e99999999999999999999", std::u16string(400, u'9'), tiny + u"e999"}},
        {"-inf", {u"-1e999"}},
        // the four characters of an escape are taken whatever they are, and read as far as they are digits
        {"'\"/\\\b\f\n\r\traw\n\0'"s, {u"\"\\\"\\/\\\\\\b\\f\\n\\r\\traw\n\0\""s}},
        {"'AżÓ😀\uFFFD'", {uR"("\u0041\u017cÓ\uD83D\uDE00\ud83d")"}},
        {"'\x12x'", {uR"("\u12G4x")", uR"("\u 12Gx")", uR"("\u0x12x")"}},
        {"'\0'"s, {uR"("\uZZZZ")", uR"("\u"]}"")"}},
        {"'\uFFFF\u00A1'", {uR"("\u-001\u+0A1")"}},
        {"refused",
         {u"", u" \t", u"{}{}", uR"({"a":1} x)", u"]", uR"({"a":1,})", u"[1,]", u"[,1]", u"[,]", u"{,}"}},
        {"refused",
         {u"[true false]", uR"({"a" 1})", uR"({"a":})", uR"({"a"})", u"{a:1}", u"{1:1}", u"{} // comment"}},
        {"refused",
         {u"{", uR"({"a")", uR"({"a":)", uR"({"a":1)", uR"({"a":1,)", uR"({"a":1])", u"[", u"[1", u"[1}"}},
        {"refused",
         {u"tru", u"True", u"NULL", u"NaN", u"nullx", u"\uFEFF{}", u"\u00A0{}", u"[\v1]", u"[\0]"s}},
        {"refused", {uR"("a)", uR"(")", uR"("\)", uR"("\")", uR"("\x41")", uR"("\u00")", uR"("\ ")"}}};
    for (const auto& [meaning, texts] : cases)
        for (const std::u16string& text : texts)
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
    constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
    const std::pair<double, std::int32_t> integers[] = {
        {99.9, 99},           {-99.9, -99},   {2147483647.9, 2147483647}, {-2147483648.5, lowest},
        {2147483648, lowest}, {-3e9, lowest}, {HUGE_VAL, lowest},         {std::nan(""), lowest}};
    for (const auto& [number, integer] : integers)
        EXPECT_EQ(integerOf(number), integer) << number;
    constexpr std::size_t depth = 300'000;
    EXPECT_EQ(read(std::u16string(depth, u'[')), "refused");
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
        {"\xC0\xAF", u"\xFFFD\xFFFD"},             // overlong solidus
        {"\xE0\x9F\xBF", u"\xFFFD\xFFFD\xFFFD"},   // overlong in three bytes
        {"\xED\xA0\x80", u"\xFFFD\xFFFD\xFFFD"},   // an encoded surrogate
        {"\xF0\x8F\xBF\xBF", u"\xFFFD\xFFFD\xFFFD\xFFFD"}, // overlong in four bytes
        {"\xF4\x90\x80\x80", u"\xFFFD\xFFFD\xFFFD\xFFFD"}, // above the last plane
        {"\xE2\x80x\xE2\x80\xC5\x82\xF0\x9F\x98",
         u"\xFFFDx\xFFFDł\xFFFD"}}; // cut by what follows, and by the end
    for (const auto& [bytes, text] : fromUtf8)
        EXPECT_EQ(utf16FromUtf8(bytes), text) << testing::PrintToString(bytes);
    EXPECT_EQ(utf8FromUtf16(u"a\0b\x7F\x80\x7FF\x800"s), "a\0b\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80"s);
    EXPECT_EQ(utf8FromUtf16(u"\xD83Dx\xDE00\xD83D\xDBFF\xDFFF\xD83D"),
              "\uFFFDx\uFFFD\uFFFD\xF4\x8F\xBF\xBF\uFFFD");
    EXPECT_EQ(asciiLowered(u"@AZ[ PUŚĆ"), u"@az[ puŚĆ");
}

TEST_F(EngineTest, TextFilesLoseTheirByteOrderMarkAndNothingElse) {
    std::u16string text;
    const std::pair<std::string, std::u16string> cases[] = {
        {"", u""},
        {"\xEF\xBB\xBF\xEF\xBB\xBF{}\r\n", u"\uFEFF{}\r\n"},
        {"a\xFFz\x1A\xEF\xBB", u"a\xFFFDz\x1A\xFFFD"}};
    for (const auto& [bytes, expected] : cases) {
        EXPECT_TRUE(readTextFile(folder.write("zażółć.json", bytes), text));
        EXPECT_EQ(text, expected) << testing::PrintToString(bytes);
    }
    for (const std::u16string& path :
         {folder.path("missing"), folder.path(), u""s, folder.path() + u"/\xD800"})
        EXPECT_FALSE(readTextFile(path, text));
}
