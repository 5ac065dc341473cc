#include "platform/linux/accessible_tree.h"

#include "platform/linux/accessible_questions.h"

#include <algorithm>
#include <utility>

namespace rotika {

namespace {

// A program with a fault may publish a tree without an end.
constexpr std::size_t deepest = 150;
constexpr std::size_t mostNodes = 30000;

// With more children than this GTK and Qt are busy for long if asked for all at once: 5,000 stop the program
// for one or two seconds.
constexpr std::int32_t mostAskedAtOnce = 250;

// Objects asked about at a time: enough to keep a program busy, and little to throw away in the end.
constexpr std::size_t mostInProgress = 48;

// A spreadsheet has more cells than anyone can ask for: above this many only what lies under these points is
// asked for, each about as far from the next as a row is high.
constexpr std::int32_t mostAskedOneByOne = 1000;
constexpr std::int32_t pointStepY = 14;
constexpr std::int32_t pointStepX = 80;
constexpr std::int32_t mostPointsPerSide = 80;
constexpr int pointsAtOnce = 32;

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

bool isNothing(const BusObject& object) {
    return object.program.empty() || object.path == "/org/a11y/atspi/null";
}

/// Sorts what is below a node into a window's own elements and those of the open menus.
class Sorter {
public:
    Sorter(const WindowView& seenWindow, Extent wanted, WindowElements& sorted)
        : view(seenWindow), extent(wanted), elements(sorted) {}

    /// False if the rest is not known yet.
    bool sortBelow(const AccessibleNode& node, const std::optional<Rect>& around, bool isInMenu) {
        const std::optional<Rect> shown = shownPartBelow(node, around);
        for (const auto& child : node.children) {
            if (extent == Extent::beginning && !child->isKnown) {
                elements.endsInMenu = isInMenu;
                return false;
            }
            if (child->place)
                take(*child, shown, isInMenu);
            if (!sortBelow(*child, shown, isInMenu || child->traits.opensMenu()))
                return false;
        }
        return true;
    }

private:
    void take(const AccessibleNode& node, const std::optional<Rect>& shown, bool isInMenu) {
        const Rect seen = shown ? common(*shown, *node.place) : *node.place;
        const bool isSeen = !isEmpty(seen);
        const Rect rect = view.fix.applied(isSeen ? seen : *node.place);
        ScreenElement element{rect, node.traits.type(), node.traits.isEnabled(),
                              !isSeen || !node.traits.isShowing(), node.traits.isFocusable()};
        const Point middle{(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
        const auto menu =
            std::ranges::find_if(view.menus, [&](const Rect& place) { return place.contains(middle); });
        if (menu != view.menus.end() && isInMenu) {
            elements.menus[static_cast<std::size_t>(menu - view.menus.begin())].push_back(element);
            return;
        }
        element.isOffscreen = element.isOffscreen || menu != view.menus.end();
        elements.others.push_back(element);
    }

    const WindowView& view;
    Extent extent;
    WindowElements& elements;
};

} // namespace

void TreeGrower::grow(AccessibleNode& root) {
    known.insert({root.object.program, root.object.path});
    ++inProgress;
    ++root.openQuestions;
    growBelow(root);
    answered(root);
}

/// A taker for one more question about the node.
template <typename Taker>
auto TreeGrower::counted(AccessibleNode& node, Taker taker) {
    ++node.openQuestions;
    return [this, &node, taker = std::move(taker)](const auto& answer) {
        taker(answer);
        answered(node);
    };
}

void TreeGrower::answered(AccessibleNode& node) {
    if (--node.openQuestions > 0)
        return;
    node.isKnown = true;
    --inProgress;
    askNext();
}

void TreeGrower::askNext() {
    while (inProgress < mostInProgress && !waiting.empty()) {
        AccessibleNode& next = *waiting.begin()->second;
        waiting.erase(waiting.begin());
        ++inProgress;
        visit(next);
    }
}

void TreeGrower::visit(AccessibleNode& node) {
    if (!node.object.path.empty()) {
        visitFound(node);
        return;
    }
    const auto index = static_cast<std::int32_t>(node.position.back());
    askForChildAtIndex(bus, node.parent->object, index,
                       counted(node, [this, &node](const std::optional<BusObject>& child) {
                           if (!child || !isNew(*child))
                               return;
                           node.object = *child;
                           visitFound(node);
                       }));
}

void TreeGrower::visitFound(AccessibleNode& node) {
    askForStates(bus, node.object, counted(node, [this, &node](std::uint64_t states) {
                     node.traits.states = states;
                     // Most of a long page lies outside its window, and nothing else is asked about that.
                     if (!node.traits.isShowing())
                         return;
                     askForRole(bus, node.object, counted(node, [this, &node](std::uint32_t role) {
                                    node.traits.role = role;
                                    expand(node);
                                }));
                 }));
}

void TreeGrower::expand(AccessibleNode& node) {
    const AccessibleTraits& traits = node.traits;
    // Qt publishes a menu below the entry that opens it.
    const bool mayOpenMenu = menus == Menus::open && traits.type() == ControlType::menuItem;
    const bool isEnd = (traits.isLeaf() && !mayOpenMenu) || node.position.size() >= deepest ||
                       (traits.isWebPage() && pages == WebPages::leaveOut);
    if (!isEnd && shownPartAround(node)) {
        // Of a long list only what is scrolled into sight is worth the questions, and not every toolkit calls
        // the rest hidden.
        askForPlace(bus, node.object, counted(node, [this, &node](const std::optional<Rect>& place) {
                        node.place = place;
                        if (!place || !isEmpty(common(*place, *shownPartAround(node))))
                            growBelow(node);
                    }));
        return;
    }
    if (mayMatter(traits))
        askForPlace(bus, node.object,
                    counted(node, [&node](const std::optional<Rect>& place) { node.place = place; }));
    if (!isEnd)
        growBelow(node);
}

void TreeGrower::growBelow(AccessibleNode& node) {
    askForChildCount(bus, node.object, counted(node, [this, &node](std::int32_t count) {
                         if (count > mostAskedOneByOne && node.traits.mayHoldVeryMany())
                             growShownOfMany(node);
                         else if (count > mostAskedAtOnce)
                             growOneByOne(node, count);
                         else if (count != 0)
                             growFew(node);
                     }));
}

void TreeGrower::growFew(AccessibleNode& node) {
    askForChildren(bus, node.object, counted(node, [this, &node](const std::vector<BusObject>& children) {
                       for (const BusObject& child : children)
                           adopt(node, child);
                   }));
}

void TreeGrower::growOneByOne(AccessibleNode& node, std::int32_t count) {
    for (std::int32_t i = 0; i < count && nodeCount < mostNodes; ++i)
        addBelow(node);
}

/// The points of a rectangle, row by row.
struct TreeGrower::PointRaster {
    Rect area;
    std::int32_t stepX;
    std::int32_t stepY;
    Point next;
};

/// The place is known by now: it was asked for before the count, and programs answer in order.
void TreeGrower::growShownOfMany(AccessibleNode& node) {
    if (!node.place)
        return;
    const Rect shown = common(*node.place, shownPartAround(node).value_or(*node.place));
    const std::int32_t stepX = std::max(pointStepX, shown.width() / mostPointsPerSide);
    const std::int32_t stepY = std::max(pointStepY, shown.height() / mostPointsPerSide);
    const auto raster = std::make_shared<PointRaster>(
        PointRaster{shown, stepX, stepY, {shown.left + stepX / 4, shown.top + stepY / 2}});
    for (int i = 0; i < pointsAtOnce; ++i)
        askForNextPoint(node, raster);
}

void TreeGrower::askForNextPoint(AccessibleNode& node, const std::shared_ptr<PointRaster>& raster) {
    const Point point = raster->next;
    if (!raster->area.contains(point))
        return;
    raster->next.x += raster->stepX;
    if (raster->next.x >= raster->area.right)
        raster->next = {raster->area.left + raster->stepX / 4, point.y + raster->stepY};
    askForChildAt(bus, node.object, point,
                  counted(node, [this, &node, raster](const std::optional<BusObject>& child) {
                      if (child)
                          adopt(node, *child);
                      askForNextPoint(node, raster);
                      askNext();
                  }));
}

bool TreeGrower::isNew(const BusObject& object) {
    return !isNothing(object) && known.insert({object.program, object.path}).second;
}

/// Nothing for an object that is in the tree already.
void TreeGrower::adopt(AccessibleNode& node, const BusObject& child) {
    if (nodeCount < mostNodes && isNew(child))
        addBelow(node).object = child;
}

AccessibleNode& TreeGrower::addBelow(AccessibleNode& node) {
    ++nodeCount;
    auto child = std::make_unique<AccessibleNode>();
    child->parent = &node;
    child->position = node.position;
    child->position.push_back(static_cast<std::uint32_t>(node.children.size()));
    waiting[child->position] = child.get();
    return *node.children.emplace_back(std::move(child));
}

WindowElements elementsBelow(const AccessibleNode& root, const WindowView& view, Extent extent) {
    WindowElements elements;
    elements.menus.resize(view.menus.size());
    elements.isWhole = (extent == Extent::everything || root.isKnown) &&
                       Sorter(view, extent, elements).sortBelow(root, std::nullopt, view.isMenu);
    return elements;
}

} // namespace rotika
