#include "files/json_reader.h"
#include "files_support.h"

#include <cmath>
#include <limits>
#include <optional>

using namespace std::string_literals;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// The four steps of every caller.
std::optional<JsonValue> readDocument(const std::u16string& text) {
    JsonCursor cursor{text};
    JsonValue root;
    if (!parseValue(cursor, root))
        return std::nullopt;
    skipWhitespace(cursor);
    return cursor.pos == text.size() ? std::optional(std::move(root)) : std::nullopt;
}

} // namespace

TEST(FilesJson, AcceptsWholeDocumentsOnly) {
    for (const std::u16string text :
         {u"{}", u" { \n } ", u"[]", u"[ \t]\r\n", uR"({ "a" : 1 , "a" : [ true , false , null ] }  )",
          u"[[],{},[{}]]", uR"({"":1})", u"true", uR"("a")"})
        EXPECT_TRUE(readDocument(text)) << utf8FromUtf16(text);
    const std::vector<std::u16string> refused[] = {
        {u"", u" \t\r\n", u"{}{}", uR"({"a":1} x)", u"]"},
        {uR"({"a":1,})", u"[1,]", u"[,1]", u"[,]", u"{,}", u"[true false]"},
        {uR"({"a" 1})", uR"({"a":})", uR"({"a"})", u"{a:1}", u"{'a':1}", u"{1:1}"},
        {u"// comment\n{}", u"{} // comment", u"[/* comment */]"},
        {u"{", uR"({"a")", uR"({"a":)", uR"({"a":1)", uR"({"a":1,)", uR"({"a":1])"},
        {u"[", u"[1", u"[1,", u"[1}"},
        {u"tru", u"True", u"NULL", u"NaN", u"Infinity", u"nullx", u"[truex]"},
        {uR"("a)", uR"(")", uR"("\)", uR"("\")", uR"("\x41")", uR"("\u00")", uR"("\ ")"},
        {u"\uFEFF{}", u"\u00A0{}", u"[\v1]", u"[\0]"s}, // no blanks of JSON
    };
    for (const auto& group : refused)
        for (const std::u16string& text : group)
            EXPECT_FALSE(readDocument(text)) << utf8FromUtf16(text);
}

TEST(FilesJson, ReadsNumbersLeniently) {
    const std::u16string tiny = u"0." + repeated(u"0"s, 400) + u"1";
    const std::pair<double, std::vector<std::u16string>> cases[] = {
        {0, {u"0", u"-", u"+", u".", u"e", u"--5", u"+-5", u"-+5", u".e5", u"1e-999", u"0e999", tiny}},
        {1, {u"1.", u"1-2", u"1e", u"1e+", tiny + u"e401"}},
        {1.2, {u"1.2.3"}},
        {-12.5, {u"-12.5"}},
        {0.5, {u".5"}},
        {7, {u"007", u"+7"}},
        {0.01, {u"1E-2"}},
        {100000, {u"1e5e5"}},
        {5e-324, {u"5e-324"}},
        {1.7976931348623157e308, {u"1.7976931348623157e308"}},
        {1.1111111111111111, {repeated(u"1"s, 400) + u"e-399"}},
        {infinity, {u"1e999", u"1e99999999999999999999", repeated(u"9"s, 400), tiny + u"e999"}},
        {-infinity, {u"-1e999"}},
    };
    for (const auto& [number, texts] : cases) {
        for (const std::u16string& text : texts) {
            const auto value = readDocument(text);
            ASSERT_TRUE(value) << utf8FromUtf16(text);
            EXPECT_EQ(value->type, JsonType::Number);
            EXPECT_EQ(value->number, number) << utf8FromUtf16(text);
        }
    }
}

TEST(FilesJson, ReadsStringsAndEscapes) {
    const std::pair<std::u16string, std::vector<std::u16string>> cases[] = {
        {u"", {u""}},
        {u"\"/\\\b\f\n\r\t", {uR"(\"\/\\\b\f\n\r\t)"}},
        {u"raw\n\ttab\0"s, {u"raw\n\ttab\0"s}},
        {u"AżÓ\xD83D\xDE00\xD83D", {uR"(\u0041\u017cÓ\uD83D\uDE00\ud83d)"}},
        // the four characters are taken whatever they are, and read as far as they are digits
        {u"\x12x", {uR"(\u12G4x)", uR"(\u 12Gx)", uR"(\u0x12x)"}},
        {u"\0"s, {uR"(\uZZZZ)", uR"(\u0xZZ)", uR"(\u"]}")"}},
        {u"\xFFFF\xA1", {uR"(\u-001\u+0A1)"}},
    };
    for (const auto& [text, insides] : cases) {
        for (const std::u16string& inside : insides) {
            const auto value = readDocument(u"[\"" + inside + u"\"]");
            ASSERT_TRUE(value) << utf8FromUtf16(inside);
            EXPECT_EQ(value->items.at(0).text, text) << utf8FromUtf16(inside);
        }
    }
}

TEST(FilesJson, KeepsOrderAndDuplicatesAndFindsTheFirst) {
    const auto root = readDocument(uR"({"b":1,"a":"x","a":2,"A":3,"\u0061b":[4]})");
    ASSERT_TRUE(root);
    ASSERT_EQ(root->members.size(), 5u);
    EXPECT_EQ(root->members[2].value.number, 2);
    EXPECT_EQ(findMember(*root, u"a"), &root->members[1].value);
    EXPECT_EQ(findMember(*root, u"a", JsonType::Number), nullptr);
    EXPECT_EQ(findMember(*root, u"ab", JsonType::Array), &root->members[4].value);
    EXPECT_EQ(findMember(*root, u"c"), nullptr);
    EXPECT_EQ(findMember(root->members[4].value, u"a"), nullptr);
}

TEST(FilesJson, TruncatesIntegersAndAnswersTheLowestOutOfRange) {
    constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
    const std::pair<double, std::int32_t> cases[] = {
        {99.9, 99},           {-99.9, -99},   {2147483647.9, 2147483647}, {-2147483648.5, lowest},
        {2147483648, lowest}, {-3e9, lowest}, {infinity, lowest},         {std::nan(""), lowest}};
    for (const auto& [number, integer] : cases)
        EXPECT_EQ(integerOf(number), integer) << number;
}

TEST(FilesJson, SurvivesAnyNesting) {
    constexpr std::size_t depth = 300'000;
    const std::u16string arrays = repeated(u"["s, depth);
    EXPECT_FALSE(readDocument(arrays));
    EXPECT_TRUE(readDocument(arrays + repeated(u"]"s, depth)));
    auto root = readDocument(repeated(uR"({"a":[)"s, depth / 2) + u"1" + repeated(u"]}"s, depth / 2));
    ASSERT_TRUE(root);
    *root = JsonValue(); // assignment destroys the old tree as well
    EXPECT_EQ(root->type, JsonType::Null);
}

TEST_F(FilesTest, TextFilesLoseTheirByteOrderMarkAndNothingElse) {
    const std::pair<std::string, std::u16string> cases[] = {{"", u""},
                                                            {"\xEF\xBB\xBF", u""},
                                                            {"\xEF\xBB\xBF{}\r\n", u"{}\r\n"},
                                                            {"\xEF\xBB\xBF\xEF\xBB\xBF", u"\uFEFF"},
                                                            {"\xEF\xBB", u"\xFFFD"},
                                                            {"a\xFFz\x1A", u"a\xFFFDz\x1A"}};
    for (const auto& [bytes, expected] : cases) {
        std::u16string text = u"old";
        EXPECT_TRUE(readTextFile(folder.write("zażółć.json", bytes), text));
        EXPECT_EQ(text, expected) << testing::PrintToString(bytes);
    }
    std::u16string text = u"old";
    for (const std::u16string& path :
         {folder.path("missing"), folder.path(), u""s, folder.path() + u"/\xD800"})
        EXPECT_FALSE(readTextFile(path, text));
    EXPECT_EQ(text, u"old");
}
