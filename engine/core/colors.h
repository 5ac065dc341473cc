#pragma once

#include "core/wheel_records.h"
#include "platform/picture.h"

#include <cstdint>

inline PictureColor withAlpha(RgbColor color, std::uint8_t alpha) {
    return {alpha, static_cast<std::uint8_t>(color), static_cast<std::uint8_t>(color >> 8),
            static_cast<std::uint8_t>(color >> 16)};
}
