#include "base/text.h"

#include <algorithm>
#include <limits>

namespace rotika {

namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

/// Valid continuation of a leading byte. Only the first continuation has a narrower range than 80 to BF: this
/// excludes overlong forms, surrogates and everything above 10FFFF.
struct Sequence {
    int continuations = 0; // 0: no sequence starts with this byte
    unsigned char lowest = 0x80;
    unsigned char highest = 0xBF;
};

Sequence sequenceAfter(unsigned char lead) {
    if (lead >= 0xC2 && lead <= 0xDF) {
        return {1};
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        return {2, static_cast<unsigned char>(lead == 0xE0 ? 0xA0 : 0x80),
                static_cast<unsigned char>(lead == 0xED ? 0x9F : 0xBF)};
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        return {3, static_cast<unsigned char>(lead == 0xF0 ? 0x90 : 0x80),
                static_cast<unsigned char>(lead == 0xF4 ? 0x8F : 0xBF)};
    }
    return {};
}

/// Decodes the non-ASCII sequence at `pos` and advances past it, or past its maximal ill-formed part.
char32_t takeSequence(std::string_view bytes, std::size_t& pos) {
    const auto lead = static_cast<unsigned char>(bytes[pos++]);
    Sequence expected = sequenceAfter(lead);
    if (expected.continuations == 0) {
        return replacementCharacter;
    }
    auto character = static_cast<char32_t>(lead & (0x3F >> expected.continuations));
    for (int i = 0; i < expected.continuations; ++i) {
        const auto byte = pos < bytes.size() ? static_cast<unsigned char>(bytes[pos]) : 0;
        if (byte < expected.lowest || byte > expected.highest) {
            return replacementCharacter;
        }
        character = character << 6 | (byte & 0x3F);
        expected.lowest = 0x80;
        expected.highest = 0xBF;
        ++pos;
    }
    return character;
}

constexpr bool isHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool isLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

char32_t takeCharacter(std::u16string_view text, std::size_t& pos) {
    const char16_t unit = text[pos++];
    if (!isHighSurrogate(unit)) {
        return isLowSurrogate(unit) ? replacementCharacter : unit;
    }
    if (pos == text.size() || !isLowSurrogate(text[pos])) {
        return replacementCharacter;
    }
    const char16_t low = text[pos++];
    return 0x10000 + ((static_cast<char32_t>(unit) - 0xD800) << 10) + (static_cast<char32_t>(low) - 0xDC00);
}

void appendUtf8(std::string& bytes, char32_t character) {
    const auto append = [&bytes](char32_t byte) { bytes.push_back(static_cast<char>(byte)); };
    if (character < 0x80) {
        append(character);
        return;
    }
    if (character < 0x800) {
        append(0xC0 | character >> 6);
    } else if (character < 0x10000) {
        append(0xE0 | character >> 12);
        append(0x80 | (character >> 6 & 0x3F));
    } else {
        append(0xF0 | character >> 18);
        append(0x80 | (character >> 12 & 0x3F));
        append(0x80 | (character >> 6 & 0x3F));
    }
    append(0x80 | (character & 0x3F));
}

} // namespace

std::u16string asciiLowered(std::u16string text) {
    std::transform(text.begin(), text.end(), text.begin(), asciiLower);
    return text;
}

std::u16string utf16FromUtf8(std::string_view bytes) {
    // A sequence never decodes to more code units than it has bytes.
    std::u16string text(bytes.size(), u'\0');
    std::size_t length = 0;
    std::size_t pos = 0;
    while (pos < bytes.size()) {
        const auto byte = static_cast<unsigned char>(bytes[pos]);
        if (byte < 0x80) {
            text[length++] = byte;
            ++pos;
            continue;
        }
        const char32_t character = takeSequence(bytes, pos);
        if (character < 0x10000) {
            text[length++] = static_cast<char16_t>(character);
        } else {
            text[length++] = static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
            text[length++] = static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
        }
    }
    text.resize(length);
    return text;
}

std::string utf8FromUtf16(std::u16string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    std::size_t pos = 0;
    while (pos < text.size()) {
        appendUtf8(bytes, takeCharacter(text, pos));
    }
    return bytes;
}

std::u16string decimalText(std::int64_t number) {
    const std::string digits = std::to_string(number);
    return {digits.begin(), digits.end()};
}

std::int32_t leadingInteger(std::u16string_view text) {
    constexpr std::int64_t lowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t highest = std::numeric_limits<std::int32_t>::max();
    auto unit = std::find_if_not(text.begin(), text.end(), isAsciiSpace);
    const bool isNegative = unit != text.end() && *unit == u'-';
    if (unit != text.end() && (*unit == u'-' || *unit == u'+')) {
        ++unit;
    }
    std::int64_t number = 0;
    for (; unit != text.end() && isAsciiDigit(*unit) && number <= highest; ++unit) {
        number = number * 10 + (*unit - u'0');
    }
    return static_cast<std::int32_t>(std::clamp(isNegative ? -number : number, lowest, highest));
}

std::u16string cutTo(std::u16string text, std::size_t maxLength) {
    text.resize(std::min(text.size(), maxLength));
    return text;
}

} // namespace rotika
