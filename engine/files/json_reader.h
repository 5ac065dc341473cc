#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace rotika {

// The engine's own JSON reader. Looser than the standard in a few exact ways (numbers, raw control characters
// in strings, \u escapes) and silent about the place of an error.

enum class JsonType : std::uint32_t { Null = 0, Bool = 1, Number = 2, String = 3, Array = 4, Object = 5 };

struct JsonMember;

/// Owns its whole subtree. Move-only, and destroyed without recursion however deep it is nested.
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

/// UTF-8 with or without a byte order mark; invalid bytes become U+FFFD. False, with `text` untouched, when
/// the file cannot be opened.
bool readTextFile(const std::u16string& path, std::u16string& text);

/// Reads a file that is one JSON document, with nothing but white space around it, into a fresh `root`.
/// False, with `root` of no use, when it cannot be opened or is anything else.
bool readJsonFile(const std::u16string& path, JsonValue& root);

/// Reads one value at `pos` into a fresh `value`; on true `pos` stands just behind it, on false neither is of
/// use. Any nesting depth is read without recursion.
bool parseValue(JsonCursor& cursor, JsonValue& value);

void skipWhitespace(JsonCursor& cursor);

/// The first member of that name, null if there is none or `value` is no object.
const JsonValue* findMember(const JsonValue& value, std::u16string_view key);

/// The same, but null as well if that first member is of another type.
const JsonValue* findMember(const JsonValue& value, std::u16string_view key, JsonType type);

/// Truncated toward zero; what does not fit, infinity included, becomes the most negative number.
std::int32_t integerOf(double number);

} // namespace rotika
