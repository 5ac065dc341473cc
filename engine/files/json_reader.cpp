#include "files/json_reader.h"

#include "base/text.h"
#include "platform/files.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>

namespace rotika {

namespace {

enum class Outcome {
    Failed,
    Complete, // the value has been read
    Entered,  // a container is open and its next child follows
};

bool atEnd(const JsonCursor& cursor) {
    return cursor.pos >= cursor.text.size();
}

bool nextIs(const JsonCursor& cursor, char16_t unit) {
    return !atEnd(cursor) && cursor.text[cursor.pos] == unit;
}

bool consume(JsonCursor& cursor, char16_t unit) {
    if (!nextIs(cursor, unit)) {
        return false;
    }
    ++cursor.pos;
    return true;
}

/// The caller checks what follows the word.
bool matchLiteral(JsonCursor& cursor, std::u16string_view literal) {
    if (std::u16string_view(cursor.text).substr(cursor.pos, literal.size()) != literal) {
        return false;
    }
    cursor.pos += literal.size();
    return true;
}

/// Like strtoul with base 16: white space, a sign and 0x may precede the digits, and the first other
/// character ends the number.
char16_t lenientHex(std::u16string_view digits) {
    const auto skip = [&digits](std::size_t count) { digits.remove_prefix(count); };
    while (!digits.empty() && isAsciiSpace(digits.front())) {
        skip(1);
    }
    const bool negative = digits.starts_with(u'-');
    if (negative || digits.starts_with(u'+')) {
        skip(1);
    }
    if (digits.starts_with(u"0x") || digits.starts_with(u"0X")) {
        skip(2);
    }
    unsigned number = 0;
    for (; !digits.empty() && isAsciiHexDigit(digits.front()); skip(1)) {
        number = number * 16 + hexDigitValue(digits.front());
    }
    return static_cast<char16_t>(negative ? 0 - number : number);
}

/// `pos` is past the backslash.
bool parseEscape(JsonCursor& cursor, std::u16string& target) {
    constexpr std::u16string_view letters = u"\"/\\bfnrt";
    constexpr std::u16string_view meanings = u"\"/\\\b\f\n\r\t";
    if (atEnd(cursor)) {
        return false;
    }
    const char16_t letter = cursor.text[cursor.pos++];
    if (letter == u'u') {
        if (cursor.text.size() - cursor.pos < 4) {
            return false;
        }
        target.push_back(lenientHex(std::u16string_view(cursor.text).substr(cursor.pos, 4)));
        cursor.pos += 4;
        return true;
    }
    const std::size_t index = letters.find(letter);
    if (index == std::u16string_view::npos) {
        return false;
    }
    target.push_back(meanings[index]);
    return true;
}

bool parseString(JsonCursor& cursor, std::u16string& target) {
    target.clear();
    if (!consume(cursor, u'"')) {
        return false;
    }
    const auto isPlain = [](char16_t unit) { return unit != u'"' && unit != u'\\'; };
    while (!atEnd(cursor)) {
        const std::size_t start = cursor.pos;
        while (!atEnd(cursor) && isPlain(cursor.text[cursor.pos])) {
            ++cursor.pos;
        }
        target.append(cursor.text, start, cursor.pos - start);
        if (consume(cursor, u'"')) {
            return true;
        }
        if (!consume(cursor, u'\\') || !parseEscape(cursor, target)) {
            return false;
        }
    }
    return false;
}

/// Whether a positive number out of the range of double is too large rather than too small, by the decimal
/// position of its first significant digit.
bool isTooLarge(std::string_view digits) {
    const std::size_t mantissaEnd = std::min(digits.find_first_of("eE"), digits.size());
    const std::string_view mantissa = digits.substr(0, mantissaEnd);
    const auto point = static_cast<std::int64_t>(std::min(mantissa.find('.'), mantissa.size()));
    const auto first = static_cast<std::int64_t>(std::min(mantissa.find_first_not_of("0."), mantissa.size()));
    const std::string_view exponent = digits.substr(std::min(mantissaEnd + 1, digits.size()));
    // No file is long enough for its digits to outweigh a saturated exponent.
    return point - first + leadingInteger(utf16FromUtf8(exponent)) > 0;
}

/// Like strtod in the C locale, for a text of digits, signs, points and exponent letters: converts the
/// longest valid prefix, 0 if there is none. std::from_chars accepts no plus sign and does not distinguish
/// overflow from underflow.
double lenientNumber(std::string_view digits) {
    const bool negative = digits.starts_with('-');
    if (negative || digits.starts_with('+')) {
        digits.remove_prefix(1);
    }
    if (digits.starts_with('-')) {
        return 0;
    }
    double number = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (result.ec == std::errc::result_out_of_range) {
        number = isTooLarge(digits) ? std::numeric_limits<double>::infinity() : 0;
    }
    return negative ? -number : number;
}

bool parseNumber(JsonCursor& cursor, JsonValue& value) {
    const std::size_t start = cursor.pos;
    const auto isNumberUnit = [](char16_t unit) {
        return isAsciiDigit(unit) || std::u16string_view(u".eE-+").find(unit) != std::u16string_view::npos;
    };
    while (!atEnd(cursor) && isNumberUnit(cursor.text[cursor.pos])) {
        ++cursor.pos;
    }
    if (cursor.pos == start) {
        return false;
    }
    const auto from = cursor.text.begin() + static_cast<std::ptrdiff_t>(start);
    std::string digits(cursor.pos - start, '\0');
    std::transform(from, from + static_cast<std::ptrdiff_t>(digits.size()), digits.begin(),
                   [](char16_t unit) { return static_cast<char>(unit); });
    value.type = JsonType::Number;
    value.number = lenientNumber(digits);
    return true;
}

/// Opens an object or array; an empty one is complete at once. Only here may the closing bracket follow
/// directly, so a trailing comma is an error.
Outcome openContainer(JsonCursor& cursor, JsonValue& value, JsonType type, char16_t closing) {
    value.type = type;
    ++cursor.pos;
    skipWhitespace(cursor);
    return consume(cursor, closing) ? Outcome::Complete : Outcome::Entered;
}

Outcome completeIf(bool success) {
    return success ? Outcome::Complete : Outcome::Failed;
}

Outcome startValue(JsonCursor& cursor, JsonValue& value) {
    skipWhitespace(cursor);
    if (atEnd(cursor)) {
        return Outcome::Failed;
    }
    switch (cursor.text[cursor.pos]) {
    case u'{':
        return openContainer(cursor, value, JsonType::Object, u'}');
    case u'[':
        return openContainer(cursor, value, JsonType::Array, u']');
    case u'"':
        value.type = JsonType::String;
        return completeIf(parseString(cursor, value.text));
    case u't':
        value.type = JsonType::Bool;
        value.boolean = true;
        return completeIf(matchLiteral(cursor, u"true"));
    case u'f':
        value.type = JsonType::Bool;
        value.boolean = false;
        return completeIf(matchLiteral(cursor, u"false"));
    case u'n':
        value.type = JsonType::Null;
        return completeIf(matchLiteral(cursor, u"null"));
    default:
        return completeIf(parseNumber(cursor, value));
    }
}

/// Appends the next child of an open container and reads its key, if it has one; null on an error. The
/// pointer stays valid until the child is complete, since its parent does not grow meanwhile.
JsonValue* appendChild(JsonCursor& cursor, JsonValue& container) {
    if (container.type == JsonType::Array) {
        return &container.items.emplace_back();
    }
    skipWhitespace(cursor);
    JsonMember& member = container.members.emplace_back();
    if (!parseString(cursor, member.key)) {
        return nullptr;
    }
    skipWhitespace(cursor);
    return consume(cursor, u':') ? &member.value : nullptr;
}

/// Reads what follows a complete child: Entered for a comma, Complete for the container's end.
Outcome continueContainer(JsonCursor& cursor, const JsonValue& container) {
    skipWhitespace(cursor);
    if (consume(cursor, u',')) {
        return Outcome::Entered;
    }
    return completeIf(consume(cursor, container.type == JsonType::Object ? u'}' : u']'));
}

/// Closes the containers that end here, innermost first; Entered if one of them has another child.
Outcome closeContainers(JsonCursor& cursor, std::vector<JsonValue*>& open) {
    while (!open.empty()) {
        const Outcome outcome = continueContainer(cursor, *open.back());
        if (outcome != Outcome::Complete) {
            return outcome;
        }
        open.pop_back();
    }
    return Outcome::Complete;
}

bool hasChildren(const JsonValue& value) {
    return !value.items.empty() || !value.members.empty();
}

} // namespace

JsonValue::~JsonValue() {
    if (!hasChildren(*this)) {
        return;
    }
    // Removes the last leaf first, so that no destructor called here recurses.
    std::vector<JsonValue*> path{this};
    while (!path.empty()) {
        JsonValue& deepest = *path.back();
        if (!hasChildren(deepest)) {
            path.pop_back();
            continue;
        }
        const bool inItems = !deepest.items.empty();
        JsonValue& last = inItems ? deepest.items.back() : deepest.members.back().value;
        if (hasChildren(last)) {
            path.push_back(&last);
        } else if (inItems) {
            deepest.items.pop_back();
        } else {
            deepest.members.pop_back();
        }
    }
}

bool readTextFile(const std::u16string& path, std::u16string& text) {
    const std::optional<std::string> bytes = readFileBytes(path);
    if (!bytes) {
        return false;
    }
    std::string_view content = *bytes;
    if (content.starts_with("\xEF\xBB\xBF")) {
        content.remove_prefix(3);
    }
    text = utf16FromUtf8(content);
    return true;
}

bool readJsonFile(const std::u16string& path, JsonValue& root) {
    std::u16string text;
    if (!readTextFile(path, text)) {
        return false;
    }
    JsonCursor cursor{text};
    if (!parseValue(cursor, root)) {
        return false;
    }
    skipWhitespace(cursor);
    return cursor.pos == text.size();
}

bool parseValue(JsonCursor& cursor, JsonValue& value) {
    std::vector<JsonValue*> open; // the containers around `target`, outermost first
    JsonValue* target = &value;
    while (target != nullptr) {
        Outcome outcome = startValue(cursor, *target);
        if (outcome == Outcome::Entered) {
            open.push_back(target);
        } else if (outcome == Outcome::Complete) {
            outcome = closeContainers(cursor, open);
        }
        if (outcome != Outcome::Entered) {
            return outcome == Outcome::Complete;
        }
        target = appendChild(cursor, *open.back());
    }
    return false;
}

void skipWhitespace(JsonCursor& cursor) {
    while (nextIs(cursor, u' ') || nextIs(cursor, u'\t') || nextIs(cursor, u'\r') || nextIs(cursor, u'\n')) {
        ++cursor.pos;
    }
}

const JsonValue* findMember(const JsonValue& value, std::u16string_view key) {
    if (value.type != JsonType::Object) {
        return nullptr;
    }
    for (const JsonMember& member : value.members) {
        if (member.key == key) {
            return &member.value;
        }
    }
    return nullptr;
}

const JsonValue* findMember(const JsonValue& value, std::u16string_view key, JsonType type) {
    const JsonValue* member = findMember(value, key);
    return member != nullptr && member->type == type ? member : nullptr;
}

std::int32_t integerOf(double number) {
    constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();
    const double whole = std::trunc(number);
    return whole >= lowest && whole <= highest ? static_cast<std::int32_t>(whole) : lowest;
}

} // namespace rotika
