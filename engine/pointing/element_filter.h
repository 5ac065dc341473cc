#pragma once

#include "platform/elements.h"

#include <cstddef>
#include <vector>

namespace rotika {

/// What a scan found: the rectangles in label order, and the part of the screen that they are labelled on.
struct ElementScanResult {
    Rect area;
    std::vector<Rect> rects;
};

/// As many as the number words can name.
inline constexpr std::size_t mostLabels = 99;

/// Keeps what can be clicked, is enabled and on show, has a fitting size, meets the area and is no duplicate
/// of one kept before, in the order of the search.
ElementScanResult filterElements(const FoundElements& found, ElementScope scope);

} // namespace rotika
