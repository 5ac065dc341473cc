#pragma once

#include "base/picture.h"

#include <cstdint>
#include <string>

namespace rotika {

// Limits of an image file; a larger one counts as no image.
inline constexpr std::uint64_t largestImageBytes = 16 * 1024 * 1024;
inline constexpr std::int32_t largestImageSidePx = 4096;

/// The image scaled to a square of `sidePx`, the size at which it is drawn; its aspect ratio is not kept.
/// Null when the path is not a regular file or not an image, or when it is larger than the limits above. PNG
/// is always supported. May block on a slow file: any thread but the owner's.
const PictureImage* loadPictureImage(const std::u16string& path, std::int32_t sidePx);

} // namespace rotika
