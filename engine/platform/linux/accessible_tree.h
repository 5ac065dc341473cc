#pragma once

#include "platform/elements.h"

#include "platform/linux/accessible_roles.h"
#include "platform/linux/bus_connection.h"
#include "platform/linux/coordinate_fix.h"

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace rotika {

/// An object of the accessibility tree, as far as it is loaded.
struct AccessibleNode {
    BusObject object; // its path is empty while only its index among its parent's children is known
    AccessibleTraits traits;
    std::optional<Rect> place; // as the program reports it
    const AccessibleNode* parent = nullptr;
    std::vector<std::unique_ptr<AccessibleNode>> children;

    // Used by the loader.
    std::vector<std::uint32_t> position; // child indexes from the root
    int pendingCalls = 0;
    bool isLoaded = false; // all of the above is loaded, not the children's own data
};

enum class WebPages { include, skip };
enum class Menus { closed, open };

/// Loads the visible descendants of an object, in tree order: the beginning is complete as early as possible.
class TreeLoader {
public:
    TreeLoader(BusConnection& usedBus, WebPages webPages, Menus openMenus)
        : bus(usedBus), pages(webPages), menus(openMenus) {}

    /// Fills in the descendants of `root` while the bus's replies arrive. Loader and root must not move until
    /// then.
    void load(AccessibleNode& root);

    /// Whether every call was made and has its reply.
    bool isDone() const { return inProgress == 0 && waiting.empty(); }

    /// Program and path of every object found so far.
    const std::set<std::pair<std::string, std::string>>& found() const { return foundObjects; }

private:
    template <typename Handler>
    auto counted(AccessibleNode& node, Handler handler);
    void finishCall(AccessibleNode& node);
    void startWaiting();
    void visit(AccessibleNode& node);
    void visitObject(AccessibleNode& node);
    void expand(AccessibleNode& node);
    void loadChildren(AccessibleNode& node);
    void loadAllChildren(AccessibleNode& node);
    void loadChildrenByIndex(AccessibleNode& node, std::int32_t count);
    void loadChildrenAtPoints(AccessibleNode& node);
    struct PointGrid;
    void requestNextPoint(AccessibleNode& node, const std::shared_ptr<PointGrid>& grid);
    bool insertIfNew(const BusObject& object);
    void addChild(AccessibleNode& node, const BusObject& child);
    AccessibleNode& appendChild(AccessibleNode& node);

    BusConnection& bus;
    WebPages pages;
    Menus menus;
    std::map<std::vector<std::uint32_t>, AccessibleNode*> waiting; // in tree order
    std::size_t inProgress = 0;
    std::size_t nodeCount = 0;
    std::set<std::pair<std::string, std::string>> foundObjects; // program and path: guards against cycles
};

/// The elements of a window, each part in tree order.
struct WindowElements {
    std::vector<std::vector<ScreenElement>> menus; // for each open menu, its elements in this tree
    std::vector<ScreenElement> others;
    bool isWhole = true;
    bool endsInMenu = false; // not whole, and the missing part may belong to a menu
};

enum class Extent {
    everything,
    beginning // up to the first object in tree order that is not fully loaded
};

/// The window's coordinates and the menus that may cover it.
struct WindowView {
    CoordinateFix fix;
    std::vector<Rect> menus; // open menus in screen coordinates, topmost first
    bool isMenu = false;     // the window is one of these
};

/// The elements below `root`. One covered by an open menu counts as off-screen: a click would not reach it.
WindowElements elementsBelow(const AccessibleNode& root, const WindowView& view, Extent extent);

/// The first descendant of `root` in tree order with the greatest `value`, or null if none is above 0.
template <typename Value>
const AccessibleNode* bestDescendant(const AccessibleNode& root, const Value& value) {
    const AccessibleNode* best = nullptr;
    for (const auto& child : root.children)
        for (const AccessibleNode* node :
             {static_cast<const AccessibleNode*>(child.get()), bestDescendant(*child, value)})
            if (node != nullptr && value(*node) > (best == nullptr ? 0 : value(*best)))
                best = node;
    return best;
}

} // namespace rotika
