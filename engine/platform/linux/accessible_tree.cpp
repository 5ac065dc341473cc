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
constexpr std::int32_t mostAskedOneByOne = 1000;
constexpr std::int32_t pointStepY = 14;
constexpr std::int32_t pointStepX = 80;
constexpr std::int32_t mostPointsPerSide = 80;

Rect common(const Rect& a, const Rect& b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}

bool isEmpty(const Rect& rect) {
    return rect.width() <= 0 || rect.height() <= 0;
}

/// `shown` cut down to where `node` lets things show that are below it.
std::optional<Rect> shownPartBelow(const AccessibleNode& node, const std::optional<Rect>& shown) {
    if (node.traits.popsUp())
        return std::nullopt;
    if (!node.traits.cutsOff() || !node.place)
        return shown;
    return shown ? common(*shown, *node.place) : *node.place;
}

/// Where `node` can be seen for all that is known, in the program's coordinates; nothing for anywhere.
std::optional<Rect> shownPartAround(const AccessibleNode& node) {
    return node.parent == nullptr ? std::nullopt
                                  : shownPartBelow(*node.parent, shownPartAround(*node.parent));
}

bool mayMatter(const AccessibleTraits& traits) {
    const ControlType type = traits.type();
    return traits.cutsOff() || type == ControlType::document || traits.isFocusable() ||
           (type != ControlType::unknown && type != ControlType::pane && type != ControlType::window);
}

void append(const AccessibleNode& node, const CoordinateFix& fix, const std::optional<Rect>& around,
            std::vector<ScreenElement>& elements) {
    const std::optional<Rect> shown = shownPartBelow(node, around);
    for (const auto& child : node.children) {
        if (child->place) {
            const Rect seen = shown ? common(*shown, *child->place) : *child->place;
            const bool isSeen = !isEmpty(seen);
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
    const bool isEnd =
        traits.isLeaf() || depth >= deepest || (traits.isWebPage() && pages == WebPages::leaveOut);
    if (!isEnd && shownPartAround(node)) {
        // Of a long list only what is scrolled into sight is worth the questions, and not every toolkit calls
        // the rest hidden.
        askForPlace(bus, node.object, [this, &node, depth](const std::optional<Rect>& place) {
            node.place = place;
            if (!place || !isEmpty(common(*place, *shownPartAround(node))))
                growBelow(node, depth);
        });
        return;
    }
    if (mayMatter(traits))
        askForPlace(bus, node.object, [&node](const std::optional<Rect>& place) { node.place = place; });
    if (!isEnd)
        growBelow(node, depth);
}

void TreeGrower::growBelow(AccessibleNode& node, int depth) {
    if (!node.traits.mayHoldVeryMany()) {
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
    const Rect shown = common(*node.place, shownPartAround(node).value_or(*node.place));
    const std::int32_t stepX = std::max(pointStepX, shown.width() / mostPointsPerSide);
    const std::int32_t stepY = std::max(pointStepY, shown.height() / mostPointsPerSide);
    for (std::int32_t y = shown.top + stepY / 2; y < shown.bottom; y += stepY)
        for (std::int32_t x = shown.left + stepX / 4; x < shown.right; x += stepX)
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
        node.children.push_back(std::make_unique<AccessibleNode>(AccessibleNode{object, {}, {}, &node, {}}));
        visit(*node.children.back(), depth + 1);
    }
}

std::vector<ScreenElement> elementsBelow(const AccessibleNode& root, const CoordinateFix& fix) {
    std::vector<ScreenElement> elements;
    append(root, fix, std::nullopt, elements);
    return elements;
}
