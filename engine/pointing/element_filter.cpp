#include "pointing/element_filter.h"

#include <algorithm>

namespace rotika {

namespace {

constexpr std::int32_t minSidePx = 8;

struct SizeLimits {
    std::int32_t width = 0;
    std::int32_t height = 0;
};

constexpr SizeLimits windowLimits{900, 700};
constexpr SizeLimits pageLimits{1400, 1000};

// Two rectangles are duplicates (a control and its inner part) when the overlap covers more than this share
// of the smaller and their areas have more than this ratio. A button in a toolbar is not a duplicate.
constexpr double duplicateOverlap = 0.85;
constexpr double duplicateAreaRatio = 0.55;

bool isClickable(const ScreenElement& element) {
    switch (element.type) {
    case ControlType::button:
    case ControlType::checkBox:
    case ControlType::comboBox:
    case ControlType::edit:
    case ControlType::hyperlink:
    case ControlType::listItem:
    case ControlType::menuItem:
    case ControlType::radioButton:
    case ControlType::slider:
    case ControlType::spinner:
    case ControlType::splitButton:
    case ControlType::tabItem:
    case ControlType::treeItem:
        return true;
    case ControlType::document: // containers may be focusable without being clickable
    case ControlType::window:
    case ControlType::pane:
        return false;
    default:
        return element.isFocusable;
    }
}

bool isInSizeLimits(const Rect& rect, const SizeLimits& limits) {
    return rect.width() >= minSidePx && rect.height() >= minSidePx && rect.width() <= limits.width &&
           rect.height() <= limits.height;
}

Rect intersectionOf(const Rect& a, const Rect& b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}

bool isEmpty(const Rect& rect) {
    return rect.left >= rect.right || rect.top >= rect.bottom;
}

double areaOf(const Rect& rect) {
    return static_cast<double>(rect.width()) * static_cast<double>(rect.height());
}

bool areDuplicates(const Rect& a, const Rect& b) {
    const Rect common = intersectionOf(a, b);
    if (isEmpty(common))
        return false;
    const double small = std::min(areaOf(a), areaOf(b));
    const double large = std::max(areaOf(a), areaOf(b));
    return small > 0 && areaOf(common) / small > duplicateOverlap && small / large > duplicateAreaRatio;
}

} // namespace

ElementScanResult filterElements(const FoundElements& found, ElementScope scope) {
    const SizeLimits& limits = scope == ElementScope::page ? pageLimits : windowLimits;
    ElementScanResult result{found.area, {}};
    for (const std::vector<ScreenElement>& root : found.roots) {
        for (const ScreenElement& element : root) {
            if (result.rects.size() >= maxLabels)
                return result;
            const auto isDuplicate = [&element](const Rect& kept) {
                return areDuplicates(element.rect, kept);
            };
            if (element.isEnabled && !element.isOffscreen && isClickable(element) &&
                isInSizeLimits(element.rect, limits) && !isEmpty(intersectionOf(element.rect, found.area)) &&
                std::ranges::none_of(result.rects, isDuplicate))
                result.rects.push_back(element.rect);
        }
    }
    return result;
}

} // namespace rotika
