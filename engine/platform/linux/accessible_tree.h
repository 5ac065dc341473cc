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

/// An object of the accessibility tree, as far as it is known.
struct AccessibleNode {
    BusObject object; // without a path as long as only its number among its parent's children is known
    AccessibleTraits traits;
    std::optional<Rect> place; // as the program says
    const AccessibleNode* parent = nullptr;
    std::vector<std::unique_ptr<AccessibleNode>> children;

    // The grower's own.
    std::vector<std::uint32_t> position; // the indexes on the way from the root
    int openQuestions = 0;
    bool isKnown = false; // all of the above; of the children, which there are
};

enum class WebPages { enter, leaveOut };
enum class Menus { closed, open };

/// Asks for what is on show below an object. What comes first in the order of the tree is asked first, so
/// that the beginning is known as early as can be.
class TreeGrower {
public:
    TreeGrower(BusConnection& askedBus, WebPages webPages, Menus openMenus)
        : bus(askedBus), pages(webPages), menus(openMenus) {}

    /// Fills in what is below `root` while the bus's answers arrive. Grower and root must stay where they are
    /// until then.
    void grow(AccessibleNode& root);

    /// Whether everything has been asked and answered.
    bool isDone() const { return inProgress == 0 && waiting.empty(); }

    /// The paths of all objects that have been come across.
    const std::set<std::pair<std::string, std::string>>& seen() const { return known; }

private:
    template <typename Taker>
    auto counted(AccessibleNode& node, Taker taker);
    void answered(AccessibleNode& node);
    void askNext();
    void visit(AccessibleNode& node);
    void visitFound(AccessibleNode& node);
    void expand(AccessibleNode& node);
    void growBelow(AccessibleNode& node);
    void growFew(AccessibleNode& node);
    void growOneByOne(AccessibleNode& node, std::int32_t count);
    void growShownOfMany(AccessibleNode& node);
    struct PointRaster;
    void askForNextPoint(AccessibleNode& node, const std::shared_ptr<PointRaster>& raster);
    bool isNew(const BusObject& object);
    void adopt(AccessibleNode& node, const BusObject& child);
    AccessibleNode& addBelow(AccessibleNode& node);

    BusConnection& bus;
    WebPages pages;
    Menus menus;
    std::map<std::vector<std::uint32_t>, AccessibleNode*> waiting; // in the order of the tree
    std::size_t inProgress = 0;
    std::size_t nodeCount = 0;
    std::set<std::pair<std::string, std::string>> known; // program and path: guards against cycles
};

/// What was found in a window, each part in the order of the tree.
struct WindowElements {
    std::vector<std::vector<ScreenElement>> menus; // of each open menu, what this tree holds of it
    std::vector<ScreenElement> others;
    bool isWhole = true;
    bool endsInMenu = false; // not whole, and what is missing may belong to a menu
};

enum class Extent {
    everything,
    beginning // up to the first object, in the order of the tree, of which something is not known yet
};

/// How a window stands on the screen.
struct WindowView {
    CoordinateFix fix;
    std::vector<Rect> menus; // open ones, on the screen, the topmost first
    bool isMenu = false;     // it is one of these
};

/// What is below `root`. What lies under an open menu counts as off the screen: a click would not reach it.
WindowElements elementsBelow(const AccessibleNode& root, const WindowView& view, Extent extent);

/// The first node below `root` in the order of the tree of the greatest `value`, or null if none has more
/// than 0.
template <typename Value>
const AccessibleNode* bestBelow(const AccessibleNode& root, const Value& value) {
    const AccessibleNode* best = nullptr;
    for (const auto& child : root.children)
        for (const AccessibleNode* node :
             {static_cast<const AccessibleNode*>(child.get()), bestBelow(*child, value)})
            if (node != nullptr && value(*node) > (best == nullptr ? 0 : value(*best)))
                best = node;
    return best;
}

} // namespace rotika
