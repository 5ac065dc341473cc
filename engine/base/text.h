#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace rotika {

// Characters are classified as in the C locale, ASCII only, and never by the locale of the process: Qt sets
// that from the environment, and a Polish locale would read "0.5" as 0.

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
/// Value of a hexadecimal digit; `c` must be one.
constexpr unsigned hexDigitValue(char16_t c) {
    return isAsciiDigit(c) ? c - u'0' : asciiLower(c) - u'a' + 10u;
}
std::u16string asciiLowered(std::u16string text);

/// Invalid sequences become U+FFFD, one for each maximal ill-formed part; never fails.
std::u16string utf16FromUtf8(std::string_view bytes);

/// Unpaired surrogates become U+FFFD; never fails.
std::string utf8FromUtf16(std::u16string_view text);

/// Decimal digits, with a minus sign if negative.
std::u16string decimalText(std::int64_t number);

/// The decimal number at the beginning of the text: white space and a sign may precede its digits, and the
/// rest is ignored. 0 without digits; saturates.
std::int32_t leadingInteger(std::u16string_view text);

/// Truncated to `maxLength` code units, for the system's fixed buffers.
std::u16string cutTo(std::u16string text, std::size_t maxLength);

} // namespace rotika
