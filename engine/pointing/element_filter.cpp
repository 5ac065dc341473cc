#include "pointing/element_filter.h"

#include <algorithm>

namespace rotika {

namespace {

constexpr std::int32_t leastSidePx = 8;

struct SizeLimits {
    std::int32_t width = 0;
    std::int32_t height = 0;
};

constexpr SizeLimits windowLimits{900, 700};
constexpr SizeLimits pageLimits{1400, 1000};

// When one of two overlapping rectangles hides this much of the smaller, and they are this much alike in
// size, they are one thing: a control and its inner part. A button in a toolbar is not the toolbar.
constexpr double duplicateOverlap = 0.85;
constexpr double duplicateLikeness = 0.55;

bool takesClicks(const ScreenElement& element) {
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
    case ControlType::document: // big containers take the focus without being anything to click
    case ControlType::window:
    case ControlType::pane:
        return false;
    default:
        return element.isFocusable;
    }
}

bool fits(const Rect& rect, const SizeLimits& limits) {
    return rect.width() >= leastSidePx && rect.height() >= leastSidePx && rect.width() <= limits.width &&
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
    return small > 0 && areaOf(common) / small > duplicateOverlap && small / large > duplicateLikeness;
}

} // namespace

ElementScanResult filterElements(const FoundElements& found, ElementScope scope) {
    const SizeLimits& limits = scope == ElementScope::page ? pageLimits : windowLimits;
    ElementScanResult result{found.area, {}};
    for (const std::vector<ScreenElement>& root : found.roots) {
        for (const ScreenElement& element : root) {
            if (result.rects.size() >= mostLabels)
                return result;
            const auto isDuplicate = [&element](const Rect& kept) {
                return areDuplicates(element.rect, kept);
            };
            if (element.isEnabled && !element.isOffscreen && takesClicks(element) &&
                fits(element.rect, limits) && !isEmpty(intersectionOf(element.rect, found.area)) &&
                std::ranges::none_of(result.rects, isDuplicate))
                result.rects.push_back(element.rect);
        }
    }
    return result;
}

} // namespace rotika
