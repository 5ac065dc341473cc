#pragma once

#include "platform/elements.h"

#include "platform/linux/accessible_roles.h"
#include "platform/linux/bus_connection.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

/// An object of the accessibility tree, as far as it is known.
struct AccessibleNode {
    BusObject object;
    AccessibleTraits traits;
    std::optional<Rect> place; // as the program says
    const AccessibleNode* parent = nullptr;
    std::vector<std::unique_ptr<AccessibleNode>> children;
};

/// How a program's coordinates become the screen's: some leave out the scale of the screen, or where their
/// window stands.
struct CoordinateFix {
    Point from; // a corner, as the program says
    Point to;   // the same corner on the screen
    double scale = 1;

    Rect applied(const Rect& rect) const;
};

enum class WebPages { enter, leaveOut };

/// Asks for what is on show below an object.
class TreeGrower {
public:
    TreeGrower(BusConnection& askedBus, WebPages webPages) : bus(askedBus), pages(webPages) {}

    /// Fills in what is below `root` while the bus's answers arrive. Grower and root must stay where they are
    /// until then.
    void grow(AccessibleNode& root);

private:
    void visit(AccessibleNode& node, int depth);
    void expand(AccessibleNode& node, int depth);
    void growBelow(AccessibleNode& node, int depth);
    void growFew(AccessibleNode& node, int depth);
    void growShownOfMany(AccessibleNode& node, int depth);
    void adopt(AccessibleNode& node, const std::vector<BusObject>& children, int depth);

    BusConnection& bus;
    WebPages pages;
    std::size_t nodeCount = 0;
};

/// Everything below `root` in the order of the tree.
std::vector<ScreenElement> elementsBelow(const AccessibleNode& root, const CoordinateFix& fix);

/// The first node below `root` in the order of the tree that `accepts` takes, or null.
template <typename Accepts>
const AccessibleNode* findBelow(const AccessibleNode& root, const Accepts& accepts) {
    for (const auto& child : root.children) {
        if (accepts(*child))
            return child.get();
        if (const AccessibleNode* found = findBelow(*child, accepts))
            return found;
    }
    return nullptr;
}
