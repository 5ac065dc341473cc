#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace rotika {

// The engine's own JSON reader. More lenient than the standard in a few defined ways (numbers, raw control
// characters in strings, \u escapes); does not report the position of an error.

enum class JsonType : std::uint32_t { Null = 0, Bool = 1, Number = 2, String = 3, Array = 4, Object = 5 };

struct JsonMember;

/// Owns its subtree. Move-only; destroyed without recursion at any nesting depth.
struct JsonValue {
    JsonValue() = default;
    JsonValue(JsonValue&&) noexcept = default;
    JsonValue& operator=(JsonValue&&) noexcept = default;
    ~JsonValue();

    JsonType type = JsonType::Null;
    bool boolean = false;
    double number = 0;
    std::u16string text;
    std::vector<JsonValue> items;
    std::vector<JsonMember> members; // document order, duplicates kept
};

struct JsonMember {
    std::u16string key;
    JsonValue value;
};

struct JsonCursor {
    const std::u16string& text; // must outlive the cursor
    std::size_t pos = 0;
};

/// UTF-8 with or without a byte order mark; invalid bytes become U+FFFD. False, with `text` unchanged, when
/// the file cannot be read.
bool readTextFile(const std::u16string& path, std::u16string& text);

/// Reads a file that is one JSON document, with only white space around it, into `root`, which must be new.
/// False, with `root` unspecified, when it cannot be read or is anything else.
bool readJsonFile(const std::u16string& path, JsonValue& root);

/// Reads one value at `pos` into `value`, which must be new; on true `pos` is just past it, on false both are
/// unspecified. Any nesting depth is read without recursion.
bool parseValue(JsonCursor& cursor, JsonValue& value);

void skipWhitespace(JsonCursor& cursor);

/// The first member of that name, null if there is none or `value` is not an object.
const JsonValue* findMember(const JsonValue& value, std::u16string_view key);

/// The same, but null as well if that first member is of another type.
const JsonValue* findMember(const JsonValue& value, std::u16string_view key, JsonType type);

/// Truncated toward zero; a number out of range, infinity and NaN included, becomes the most negative one.
std::int32_t integerOf(double number);

} // namespace rotika
