#include "platform/linux/accessible_tree.h"

#include "platform/linux/accessible_questions.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// A program with a fault may publish a tree that bites its tail.
constexpr int deepest = 150;
constexpr std::size_t mostNodes = 30000;

// A spreadsheet has more cells than anyone can ask for: above this many only what lies under these points is
// asked for, each about as far from the next as a row is high.
constexpr std::int32_t mostAskedOneByOne = 400;
constexpr std::int32_t pointStepY = 14;
constexpr std::int32_t pointStepX = 80;
constexpr std::int32_t mostPointsPerSide = 80;

Rect common(const Rect& a, const Rect& b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}

bool mayMatter(const AccessibleTraits& traits) {
    const ControlType type = traits.type();
    return traits.cutsOff() || type == ControlType::document || traits.isFocusable() ||
           (type != ControlType::unknown && type != ControlType::pane && type != ControlType::window);
}

/// `shown` is the part of the program's coordinates in which anything below `node` can be seen.
void append(const AccessibleNode& node, const CoordinateFix& fix, std::optional<Rect> shown,
            std::vector<ScreenElement>& elements) {
    if (node.traits.popsUp())
        shown.reset();
    else if (node.traits.cutsOff() && node.place)
        shown = shown ? common(*shown, *node.place) : *node.place;
    for (const auto& child : node.children) {
        if (child->place) {
            const Rect seen = shown ? common(*shown, *child->place) : *child->place;
            const bool isSeen = seen.width() > 0 && seen.height() > 0;
            elements.push_back({fix.applied(isSeen ? seen : *child->place), child->traits.type(),
                                child->traits.isEnabled(), !isSeen || !child->traits.isShowing(),
                                child->traits.isFocusable()});
        }
        append(*child, fix, shown, elements);
    }
}

} // namespace

Rect CoordinateFix::applied(const Rect& rect) const {
    const auto moved = [this](std::int32_t value, std::int32_t start, std::int32_t end) {
        return end + static_cast<std::int32_t>(std::lround((value - start) * scale));
    };
    return {moved(rect.left, from.x, to.x), moved(rect.top, from.y, to.y), moved(rect.right, from.x, to.x),
            moved(rect.bottom, from.y, to.y)};
}

void TreeGrower::grow(AccessibleNode& root) {
    growFew(root, 0);
}

void TreeGrower::visit(AccessibleNode& node, int depth) {
    askForStates(bus, node.object, [this, &node, depth](std::uint64_t states) {
        node.traits.states = states;
        // Most of a long page lies outside its window, and nothing else is asked about that.
        if (!node.traits.isShowing())
            return;
        askForRole(bus, node.object, [this, &node, depth](std::uint32_t role) {
            node.traits.role = role;
            expand(node, depth);
        });
    });
}

void TreeGrower::expand(AccessibleNode& node, int depth) {
    const AccessibleTraits& traits = node.traits;
    if (mayMatter(traits))
        askForPlace(bus, node.object, [&node](const std::optional<Rect>& place) { node.place = place; });
    if (traits.isLeaf() || depth >= deepest || (traits.isWebPage() && pages == WebPages::leaveOut))
        return;
    if (!traits.mayHoldVeryMany()) {
        growFew(node, depth);
        return;
    }
    askForChildCount(bus, node.object, [this, &node, depth](std::int32_t count) {
        if (count > mostAskedOneByOne)
            growShownOfMany(node, depth);
        else
            growFew(node, depth);
    });
}

void TreeGrower::growFew(AccessibleNode& node, int depth) {
    askForChildren(bus, node.object, [this, &node, depth](const std::vector<BusObject>& children) {
        adopt(node, children, depth);
    });
}

/// The place is known by now: it was asked for before the count, and programs answer in order.
void TreeGrower::growShownOfMany(AccessibleNode& node, int depth) {
    if (!node.place)
        return;
    const std::int32_t stepX = std::max(pointStepX, node.place->width() / mostPointsPerSide);
    const std::int32_t stepY = std::max(pointStepY, node.place->height() / mostPointsPerSide);
    for (std::int32_t y = node.place->top + stepY / 2; y < node.place->bottom; y += stepY)
        for (std::int32_t x = node.place->left + stepX / 4; x < node.place->right; x += stepX)
            askForChildAt(bus, node.object, {x, y},
                          [this, &node, depth](const std::optional<BusObject>& child) {
                              const auto isSame = [&child](const auto& known) {
                                  return known->object.path == child->path;
                              };
                              if (child && child->path != node.object.path &&
                                  std::ranges::none_of(node.children, isSame))
                                  adopt(node, {*child}, depth);
                          });
}

void TreeGrower::adopt(AccessibleNode& node, const std::vector<BusObject>& children, int depth) {
    for (const BusObject& object : children) {
        if (nodeCount >= mostNodes)
            return;
        ++nodeCount;
        node.children.push_back(std::make_unique<AccessibleNode>(AccessibleNode{object, {}, {}, {}}));
        visit(*node.children.back(), depth + 1);
    }
}

std::vector<ScreenElement> elementsBelow(const AccessibleNode& root, const CoordinateFix& fix) {
    std::vector<ScreenElement> elements;
    append(root, fix, std::nullopt, elements);
    return elements;
}
