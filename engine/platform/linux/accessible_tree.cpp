#include "platform/linux/accessible_tree.h"

#include "platform/linux/accessible_requests.h"

#include <algorithm>
#include <utility>

namespace rotika {

namespace {

// A faulty program may publish an endless tree.
constexpr std::size_t maxDepth = 150;
constexpr std::size_t maxNodes = 30000;

// GTK and Qt block for long when a call requests more children than this: 5,000 stop the program for one or
// two seconds.
constexpr std::int32_t maxChildrenPerCall = 250;

// Objects loaded at a time: enough to keep a program busy, and few to discard at the end.
constexpr std::size_t maxInProgress = 48;

// A spreadsheet has too many cells to request each: above this many children only those at grid points are
// requested, with a step of about a row's height.
constexpr std::int32_t maxChildrenByIndex = 1000;
constexpr std::int32_t pointStepY = 14;
constexpr std::int32_t pointStepX = 80;
constexpr std::int32_t maxPointsPerSide = 80;
constexpr int pointsAtOnce = 32;

Rect intersection(const Rect& a, const Rect& b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}

bool isEmpty(const Rect& rect) {
    return rect.width() <= 0 || rect.height() <= 0;
}

/// `shown` clipped to where descendants of `node` are visible; nullopt: unlimited.
std::optional<Rect> clipBelow(const AccessibleNode& node, const std::optional<Rect>& shown) {
    if (node.traits.opensOwnWindow())
        return std::nullopt;
    if (!node.traits.clipsDescendants() || !node.place)
        return shown;
    return shown ? intersection(*shown, *node.place) : *node.place;
}

/// Where `node` can be visible as far as is known, in the program's coordinates; nullopt: unlimited.
std::optional<Rect> clipAround(const AccessibleNode& node) {
    return node.parent == nullptr ? std::nullopt : clipBelow(*node.parent, clipAround(*node.parent));
}

bool mayBeUseful(const AccessibleTraits& traits) {
    const ControlType type = traits.type();
    return traits.clipsDescendants() || type == ControlType::document || traits.isFocusable() ||
           (type != ControlType::unknown && type != ControlType::pane && type != ControlType::window);
}

bool isNullObject(const BusObject& object) {
    return object.program.empty() || object.path == "/org/a11y/atspi/null";
}

/// Sorts the descendants of a node into a window's own elements and those of the open menus.
class ElementSorter {
public:
    ElementSorter(const WindowView& seenWindow, Extent wanted, WindowElements& sorted)
        : view(seenWindow), extent(wanted), elements(sorted) {}

    /// False if the rest is not loaded yet.
    bool sortDescendants(const AccessibleNode& node, const std::optional<Rect>& around, bool isInMenu) {
        const std::optional<Rect> shown = clipBelow(node, around);
        for (const auto& child : node.children) {
            if (extent == Extent::beginning && !child->isLoaded) {
                elements.endsInMenu = isInMenu;
                return false;
            }
            if (child->place)
                add(*child, shown, isInMenu);
            if (!sortDescendants(*child, shown, isInMenu || child->traits.opensMenu()))
                return false;
        }
        return true;
    }

private:
    void add(const AccessibleNode& node, const std::optional<Rect>& shown, bool isInMenu) {
        const Rect seen = shown ? intersection(*shown, *node.place) : *node.place;
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

void TreeLoader::load(AccessibleNode& root) {
    foundObjects.insert({root.object.program, root.object.path});
    ++inProgress;
    ++root.pendingCalls;
    loadChildren(root);
    finishCall(root);
}

/// Wraps the handler of one more call for the node.
template <typename Handler>
auto TreeLoader::counted(AccessibleNode& node, Handler handler) {
    ++node.pendingCalls;
    return [this, &node, handler = std::move(handler)](const auto& reply) {
        handler(reply);
        finishCall(node);
    };
}

void TreeLoader::finishCall(AccessibleNode& node) {
    if (--node.pendingCalls > 0)
        return;
    node.isLoaded = true;
    --inProgress;
    startWaiting();
}

void TreeLoader::startWaiting() {
    while (inProgress < maxInProgress && !waiting.empty()) {
        AccessibleNode& next = *waiting.begin()->second;
        waiting.erase(waiting.begin());
        ++inProgress;
        visit(next);
    }
}

void TreeLoader::visit(AccessibleNode& node) {
    if (!node.object.path.empty()) {
        visitObject(node);
        return;
    }
    const auto index = static_cast<std::int32_t>(node.position.back());
    requestChildAtIndex(bus, node.parent->object, index,
                        counted(node, [this, &node](const std::optional<BusObject>& child) {
                            if (!child || !insertIfNew(*child))
                                return;
                            node.object = *child;
                            visitObject(node);
                        }));
}

void TreeLoader::visitObject(AccessibleNode& node) {
    requestStates(bus, node.object, counted(node, [this, &node](std::uint64_t states) {
                      node.traits.states = states;
                      // Most of a long page lies outside its window: no further calls for that part.
                      if (!node.traits.isShowing())
                          return;
                      requestRole(bus, node.object, counted(node, [this, &node](std::uint32_t role) {
                                      node.traits.role = role;
                                      expand(node);
                                  }));
                  }));
}

void TreeLoader::expand(AccessibleNode& node) {
    const AccessibleTraits& traits = node.traits;
    // Qt publishes a menu as a child of the entry that opens it.
    const bool mayOpenMenu = menus == Menus::open && traits.type() == ControlType::menuItem;
    const bool skipsChildren = (traits.isLeaf() && !mayOpenMenu) || node.position.size() >= maxDepth ||
                               (traits.isWebPage() && pages == WebPages::skip);
    if (!skipsChildren && clipAround(node)) {
        // Load only the part of a long list that is scrolled into view; not every toolkit reports the rest as
        // hidden.
        requestPlace(bus, node.object, counted(node, [this, &node](const std::optional<Rect>& place) {
                         node.place = place;
                         if (!place || !isEmpty(intersection(*place, *clipAround(node))))
                             loadChildren(node);
                     }));
        return;
    }
    if (mayBeUseful(traits))
        requestPlace(bus, node.object,
                     counted(node, [&node](const std::optional<Rect>& place) { node.place = place; }));
    if (!skipsChildren)
        loadChildren(node);
}

void TreeLoader::loadChildren(AccessibleNode& node) {
    requestChildCount(bus, node.object, counted(node, [this, &node](std::int32_t count) {
                          if (count > maxChildrenByIndex && node.traits.mayHaveManyChildren())
                              loadChildrenAtPoints(node);
                          else if (count > maxChildrenPerCall)
                              loadChildrenByIndex(node, count);
                          else if (count != 0)
                              loadAllChildren(node);
                      }));
}

void TreeLoader::loadAllChildren(AccessibleNode& node) {
    requestChildren(bus, node.object, counted(node, [this, &node](const std::vector<BusObject>& children) {
                        for (const BusObject& child : children)
                            addChild(node, child);
                    }));
}

void TreeLoader::loadChildrenByIndex(AccessibleNode& node, std::int32_t count) {
    for (std::int32_t i = 0; i < count && nodeCount < maxNodes; ++i)
        appendChild(node);
}

/// Points of a rectangle, row by row.
struct TreeLoader::PointGrid {
    Rect area;
    std::int32_t stepX;
    std::int32_t stepY;
    Point next;
};

/// The place has arrived by now: it was requested before the count, and programs reply in order.
void TreeLoader::loadChildrenAtPoints(AccessibleNode& node) {
    if (!node.place)
        return;
    const Rect shown = intersection(*node.place, clipAround(node).value_or(*node.place));
    const std::int32_t stepX = std::max(pointStepX, shown.width() / maxPointsPerSide);
    const std::int32_t stepY = std::max(pointStepY, shown.height() / maxPointsPerSide);
    const auto grid = std::make_shared<PointGrid>(
        PointGrid{shown, stepX, stepY, {shown.left + stepX / 4, shown.top + stepY / 2}});
    for (int i = 0; i < pointsAtOnce; ++i)
        requestNextPoint(node, grid);
}

void TreeLoader::requestNextPoint(AccessibleNode& node, const std::shared_ptr<PointGrid>& grid) {
    const Point point = grid->next;
    if (!grid->area.contains(point))
        return;
    grid->next.x += grid->stepX;
    if (grid->next.x >= grid->area.right)
        grid->next = {grid->area.left + grid->stepX / 4, point.y + grid->stepY};
    requestChildAt(bus, node.object, point,
                   counted(node, [this, &node, grid](const std::optional<BusObject>& child) {
                       if (child)
                           addChild(node, *child);
                       requestNextPoint(node, grid);
                       startWaiting();
                   }));
}

bool TreeLoader::insertIfNew(const BusObject& object) {
    return !isNullObject(object) && foundObjects.insert({object.program, object.path}).second;
}

/// Ignores an object that is in the tree already.
void TreeLoader::addChild(AccessibleNode& node, const BusObject& child) {
    if (nodeCount < maxNodes && insertIfNew(child))
        appendChild(node).object = child;
}

AccessibleNode& TreeLoader::appendChild(AccessibleNode& node) {
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
    elements.isWhole = (extent == Extent::everything || root.isLoaded) &&
                       ElementSorter(view, extent, elements).sortDescendants(root, std::nullopt, view.isMenu);
    return elements;
}

} // namespace rotika
