#pragma once

#include <cstdint>

namespace rotika {

/// A colour as stored in files: red in the low byte, then green, then blue.
using RgbColor = std::uint32_t;

/// A colour of a picture. Not premultiplied.
struct PictureColor {
    std::uint8_t alpha = 0;
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    bool operator==(const PictureColor&) const = default;
};

inline PictureColor withAlpha(RgbColor color, std::uint8_t alpha) {
    return {alpha, static_cast<std::uint8_t>(color), static_cast<std::uint8_t>(color >> 8),
            static_cast<std::uint8_t>(color >> 16)};
}

constexpr PictureColor white(std::uint8_t alpha) {
    return {alpha, 0xFF, 0xFF, 0xFF};
}
constexpr PictureColor black(std::uint8_t alpha) {
    return {alpha, 0, 0, 0};
}

} // namespace rotika
