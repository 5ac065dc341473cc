#include "files/color_text.h"

#include "base/text.h"

#include <algorithm>

namespace rotika {

bool parseHexColor(std::u16string_view text, RgbColor& color) {
    if (text.size() != 7 || text[0] != u'#' || !std::all_of(text.begin() + 1, text.end(), isAsciiHexDigit)) {
        return false;
    }
    RgbColor number = 0; // 0xRRGGBB
    for (const char16_t unit : text.substr(1)) {
        number = number << 4 | hexDigitValue(unit);
    }
    color = (number & 0xFF) << 16 | (number & 0xFF00) | number >> 16;
    return true;
}

std::string colorText(RgbColor color) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string text = "#";
    for (const unsigned shift : {0u, 8u, 16u}) {
        text += digits[color >> shift >> 4 & 0xF];
        text += digits[color >> shift & 0xF];
    }
    return text;
}

} // namespace rotika
