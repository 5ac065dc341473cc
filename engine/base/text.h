#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace rotika {

// Characters are classified as the C locale does, ASCII only, and never by the locale of the process: Qt sets
// that one from the environment, and a Polish locale would read "0.5" as 0.

constexpr bool isAsciiDigit(char16_t c) {
    return c >= u'0' && c <= u'9';
}
constexpr bool isAsciiSpace(char16_t c) {
    return c == u' ' || (c >= u'\t' && c <= u'\r');
}
constexpr bool isAsciiHexDigit(char16_t c) {
    return isAsciiDigit(c) || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}
constexpr char16_t asciiLower(char16_t c) {
    return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c;
}
constexpr char16_t asciiUpper(char16_t c) {
    return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c;
}
std::u16string asciiLowered(std::u16string text);

/// Invalid sequences become U+FFFD, one for each maximal ill-formed part; never fails.
std::u16string utf16FromUtf8(std::string_view bytes);

/// Unpaired surrogates become U+FFFD; never fails.
std::string utf8FromUtf16(std::u16string_view text);

/// Decimal digits, with a minus sign if negative.
std::u16string decimalText(std::int64_t number);

/// The number that the text begins with, in decimal: white space and a sign may stand before its digits, and
/// what follows them is passed over. 0 without digits; what does not fit becomes the nearest that does.
std::int32_t leadingInteger(std::u16string_view text);

/// A new text of at most `maxLength` code units, for the system's fixed buffers.
std::u16string cutTo(std::u16string text, std::size_t maxLength);

} // namespace rotika
