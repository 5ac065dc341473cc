#include "files/json_reader.h"
#include "files_support.h"

#include <cmath>
#include <limits>
#include <optional>

namespace {

/// The four steps of every caller.
std::optional<JsonValue> readDocument(const std::u16string& text) {
    JsonCursor cursor{text};
    JsonValue root;
    if (!parseValue(cursor, root)) {
        return std::nullopt;
    }
    skipWhitespace(cursor);
    return cursor.pos == text.size() ? std::optional(std::move(root)) : std::nullopt;
}

std::u16string repeated(std::u16string_view piece, std::size_t count) {
    std::u16string text;
    text.reserve(piece.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        text += piece;
    }
    return text;
}

} // namespace

TEST(FilesJson, AcceptsAndRefusesDocuments) {
    using namespace std::string_literals;
    const struct {
        std::u16string text;
        bool accepted;
    } cases[] = {
        {u"", false},
        {u" \t\r\n", false},
        {u"{}", true},
        {u" { \n } ", true},
        {u"[]", true},
        {u"[ \t]\r\n", true},
        {u"{\"a\":1}", true},
        {u"{ \"a\" : 1 , \"a\" : [ true , false , null ] }", true},
        {u"[[],{},[{}]]", true},
        {u"{\"a\":1}  ", true},
        {u"{\"\":1}", true},
        {u"{\"a\":1,}", false},
        {u"[1,]", false},
        {u"[,1]", false},
        {u"[,]", false},
        {u"{,}", false},
        {u"{\"a\" 1}", false},
        {u"{\"a\":}", false},
        {u"{\"a\"}", false},
        {u"{a:1}", false},
        {u"{'a':1}", false},
        {u"{1:1}", false},
        {u"// comment\n{}", false},
        {u"{} // comment", false},
        {u"[/* comment */]", false},
        {u"{\"a\":1} x", false},
        {u"{}{}", false},
        {u"{", false},
        {u"{\"a\"", false},
        {u"{\"a\":", false},
        {u"{\"a\":1", false},
        {u"{\"a\":1,", false},
        {u"[", false},
        {u"[1", false},
        {u"[1,", false},
        {u"[1}", false},
        {u"{\"a\":1]", false},
        {u"]", false},
        {u"true", true},
        {u"tru", false},
        {u"True", false},
        {u"NULL", false},
        {u"NaN", false},
        {u"Infinity", false},
        {u"nullx", false},
        {u"[truex]", false},
        {u"[true false]", false},
        {u"\"a\"", true},
        {u"\"a", false},
        {u"\"", false},
        {u"\"\\", false},
        {u"\"\\\"", false},
        {u"\"\\x41\"", false},
        {u"\"\\u00\"", false},
        {u"\"\\ \"", false},
        {u"\uFEFF{}", false},
        {u"\u00A0{}", false},
        {u"[\v1]", false},
        {u"[\0]"s, false},
    };
    for (const auto& example : cases) {
        EXPECT_EQ(readDocument(example.text).has_value(), example.accepted) << utf8FromUtf16(example.text);
    }
}

TEST(FilesJson, ReadsNumbersLeniently) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const struct {
        std::u16string text;
        double number;
    } cases[] = {
        {u"0", 0},
        {u"-12.5", -12.5},
        {u"+5", 5},
        {u"007", 7},
        {u".5", 0.5},
        {u"1.", 1},
        {u"1.2.3", 1.2},
        {u"1-2", 1},
        {u"1e5e5", 100000},
        {u"1e", 1},
        {u"1e+", 1},
        {u"1E-2", 0.01},
        {u"-", 0},
        {u"+", 0},
        {u".", 0},
        {u"e", 0},
        {u"E", 0},
        {u"--5", 0},
        {u"+-", 0},
        {u"+-5", 0},
        {u"-+5", 0},
        {u".e5", 0},
        {u"1e999", infinity},
        {u"-1e999", -infinity},
        {u"1e99999999999999999999", infinity},
        {u"1e-999", 0},
        {u"0e999", 0},
        {u"5e-324", 5e-324},
        {u"1.7976931348623157e308", 1.7976931348623157e308},
        {repeated(u"9", 400), infinity},
        {u"0." + repeated(u"0", 400) + u"1", 0},
        {u"0." + repeated(u"0", 400) + u"1e401", 1},
        {u"0." + repeated(u"0", 400) + u"1e999", infinity},
        {repeated(u"1", 400) + u"e-399", 1.1111111111111111},
    };
    for (const auto& example : cases) {
        const auto value = readDocument(example.text);
        ASSERT_TRUE(value) << utf8FromUtf16(example.text);
        EXPECT_EQ(value->type, JsonType::Number);
        EXPECT_EQ(value->number, example.number) << utf8FromUtf16(example.text);
    }
}

TEST(FilesJson, ReadsStringsAndEscapes) {
    using namespace std::string_literals;
    const struct {
        std::u16string inside;
        std::u16string text;
    } cases[] = {
        {u"", u""},
        {uR"(\"\/\\\b\f\n\r\t)", u"\"/\\\b\f\n\r\t"},
        {u"raw\n\ttab\0"s, u"raw\n\ttab\0"s},
        {uR"(\u0041b)", u"Ab"},
        {uR"(\u017cÓ)", u"żÓ"},
        {uR"(\u12G4x)", u"\x12x"},
        {uR"(\uZZZZ)", u"\0"s},
        {uR"(\u 12G)", u"\x12"},
        {uR"(\u-001)", u"\xFFFF"},
        {uR"(\u+0A1)", u"\xA1"},
        {uR"(\u0x1F)", u"\x1F"},
        {uR"(\u0xZZ)", u"\0"s},
        {uR"(\u"]}")", u"\0"s}, // the four are taken whatever they are
        {uR"(\uD83D\uDE00)", u"\xD83D\xDE00"},
        {uR"(\ud83d)", u"\xD83D"},
    };
    for (const auto& example : cases) {
        const auto value = readDocument(u"[\"" + example.inside + u"\"]");
        ASSERT_TRUE(value) << utf8FromUtf16(example.inside);
        EXPECT_EQ(value->items.at(0).text, example.text) << utf8FromUtf16(example.inside);
    }
}

TEST(FilesJson, KeepsOrderAndDuplicatesAndFindsTheFirst) {
    const auto root = readDocument(u"{\"b\":1,\"a\":\"x\",\"a\":2,\"A\":3,\"\\u0061b\":[4]}");
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
        {99.9, 99},
        {-99.9, -99},
        {-0.5, 0},
        {2147483647.9, 2147483647},
        {-2147483648.5, lowest},
        {2147483648.0, lowest},
        {3e9, lowest},
        {-3e9, lowest},
        {std::numeric_limits<double>::infinity(), lowest},
        {std::nan(""), lowest},
    };
    for (const auto& [number, integer] : cases) {
        EXPECT_EQ(integerOf(number), integer) << number;
    }
}

TEST(FilesJson, SurvivesAnyNesting) {
    constexpr std::size_t depth = 1'000'000;
    const std::u16string arrays = repeated(u"[", depth);
    const std::u16string objects = repeated(u"{\"a\":[", depth / 2);
    EXPECT_FALSE(readDocument(arrays));
    EXPECT_FALSE(readDocument(objects + u"}"));
    auto root = readDocument(arrays + repeated(u"]", depth));
    ASSERT_TRUE(root);
    EXPECT_EQ(root->items.at(0).items.size(), 1u);
    root = readDocument(objects + u"1" + repeated(u"]}", depth / 2));
    ASSERT_TRUE(root);
    *root = JsonValue(); // assignment destroys the old tree as well
    EXPECT_EQ(root->type, JsonType::Null);
}

TEST_F(FilesTest, TextFilesLoseTheirByteOrderMarkAndNothingElse) {
    const std::pair<std::string, std::u16string> cases[] = {
        {"", u""},
        {"\xEF\xBB\xBF", u""},
        {"\xEF\xBB\xBF{}\r\n", u"{}\r\n"},
        {"\xEF\xBB\xBF\xEF\xBB\xBF", u"\uFEFF"},
        {"\xEF\xBB", u"\xFFFD"},
        {"a\xFFz\x1A", u"a\xFFFDz\x1A"},
        {"\xFF\xFE{", u"\xFFFD\xFFFD{"},
    };
    for (const auto& [bytes, expected] : cases) {
        std::u16string text = u"old";
        EXPECT_TRUE(readTextFile(folder.write("zażółć.json", bytes), text));
        EXPECT_EQ(text, expected) << testing::PrintToString(bytes);
    }
    std::u16string text = u"old";
    EXPECT_FALSE(readTextFile(folder.path("missing.json"), text));
    EXPECT_FALSE(readTextFile(folder.path(), text));
    EXPECT_FALSE(readTextFile(u"", text));
    EXPECT_FALSE(readTextFile(folder.path() + u"/\xD800", text));
    EXPECT_EQ(text, u"old");
}
