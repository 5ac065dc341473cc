#pragma once

#include "platform/elements.h"

#include <cstddef>
#include <vector>

namespace rotika {

/// Result of a scan: the rectangles in label order, and the part of the screen that the labels cover.
struct ElementScanResult {
    Rect area;
    std::vector<Rect> rects;
};

/// The largest number that can be spoken.
inline constexpr std::size_t maxLabels = 99;

/// Keeps elements that are clickable, enabled, on the screen, within the size limits, in the area and not a
/// duplicate of an earlier one, in the order of the search.
ElementScanResult filterElements(const FoundElements& found, ElementScope scope);

} // namespace rotika
