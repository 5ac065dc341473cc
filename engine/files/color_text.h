#pragma once

#include "base/color.h"

#include <string>
#include <string_view>

namespace rotika {

/// Accepts "#RRGGBB" exactly, in either case. On false `color` is unchanged.
bool parseHexColor(std::u16string_view text, RgbColor& color);

/// "#RRGGBB" with upper-case digits.
std::string colorText(RgbColor color);

} // namespace rotika
