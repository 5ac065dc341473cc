#include "platform/elements.h"

#include "platform/linux/accessibility.h"
#include "platform/linux/accessible_tree.h"
#include "platform/linux/front_window.h"
#include "platform/linux/window_search.h"

#include <algorithm>
#include <chrono>
#include <deque>

namespace rotika {

namespace {

using Clock = std::chrono::steady_clock;

// A program that hangs costs no more than the one, a slow one that goes on answering no more than the other.
constexpr std::chrono::milliseconds silenceLimit{1500};
constexpr std::chrono::milliseconds searchLimit{4000};

// Some browsers only begin to publish what a window holds when they are first asked.
constexpr std::chrono::milliseconds wakingPause{150};
constexpr int mostWakings = 4;

constexpr std::chrono::milliseconds betweenLooks{10};

// Of a window that has enough without a page the rest is searched no longer than this for one.
constexpr std::chrono::milliseconds pagePatience{1500};

// Smaller ones are advertisements, tool tips and the like.
constexpr std::int32_t leastPageSidePx = 200;

Rect cutTo(const Rect& area, const Rect& page) {
    const Rect cut{std::max(area.left, page.left), std::max(area.top, page.top),
                   std::min(area.right, page.right), std::min(area.bottom, page.bottom)};
    return cut.width() > 0 && cut.height() > 0 ? cut : area;
}

/// What of a page can be seen; 0 for what is none.
std::int64_t pageSize(const AccessibleNode& node, const CoordinateFix& fix, const Rect& window) {
    if (!node.traits.isWebPage() || !node.traits.isShowing() || !node.place)
        return 0;
    const Rect place = cutTo(fix.applied(*node.place), window);
    const bool isPage = place.width() > leastPageSidePx && place.height() > leastPageSidePx;
    return isPage ? std::int64_t{place.width()} * place.height() : 0;
}

class ElementsSearch {
public:
    ElementsSearch(BusConnection& askedBus, const ScreenFacts& facts, const ElementSearch& wantedElements)
        : bus(askedBus), screen(facts), wanted(wantedElements) {}

    /// False if the window in front is published, but nothing of what it holds.
    bool searchWindowAndPanels() {
        WindowSearch& search = begin(WebPages::enter, WindowSearch::Besides::menusAndPanels);
        search.run(wanted.isEnough);
        found = search.found();
        return !screen.front || search.front().grower == nullptr ||
               !elementsBelow(search.front().root, {}, Extent::everything).others.empty();
    }

    /// False as above.
    bool searchPage() {
        found = {screen.monitor, {}};
        if (!screen.front)
            return true;
        WindowSearch& search = begin(WebPages::leaveOut, WindowSearch::Besides::nothing);
        const Clock::time_point patienceEnd = Clock::now() + pagePatience;
        search.run([&](const FoundElements& beginning) {
            return wanted.isEnough && Clock::now() >= patienceEnd && wanted.isEnough(beginning);
        });
        const SearchedWindow& window = search.front();
        if (window.grower == nullptr)
            return true;
        // Side bars may be web documents as well.
        const AccessibleNode* page = bestBelow(window.root, [&](const AccessibleNode& node) {
            return pageSize(node, window.fix, window.facts.place);
        });
        if (page != nullptr)
            return searchBelow(*page, window.fix);
        const AccessibleNode* document = bestBelow(window.root, [](const AccessibleNode& node) {
            return node.traits.type() == ControlType::document ? 1 : 0;
        });
        look(document != nullptr ? *document : window.root, window.fix, Extent::everything);
        return !found.roots.front().empty();
    }

    FoundElements found;

private:
    WindowSearch& begin(WebPages pages, WindowSearch::Besides besides) {
        searches.push_back(std::make_unique<WindowSearch>(bus, screen, pages, besides));
        return *searches.back();
    }

    /// Puts what is known below the root in place of what was found.
    void look(const AccessibleNode& root, const CoordinateFix& fix, Extent extent) {
        found.roots = {elementsBelow(root, {fix, {}, false}, extent).others};
    }

    bool searchBelow(const AccessibleNode& page, const CoordinateFix& fix) {
        found.area = cutTo(found.area, fix.applied(*page.place));
        AccessibleNode& root = roots.emplace_back();
        root.object = page.object;
        root.traits = page.traits;
        root.place = page.place;
        TreeGrower& grower = growers.emplace_back(bus, WebPages::enter, Menus::closed);
        grower.grow(root);
        Clock::time_point nextLook = Clock::now();
        bus.waitForAnswers([&] {
            if (grower.isDone() || Clock::now() < nextLook)
                return grower.isDone();
            look(root, fix, Extent::beginning);
            nextLook = Clock::now() + betweenLooks;
            return wanted.isEnough && wanted.isEnough(found);
        });
        look(root, fix, Extent::everything);
        return !found.roots.front().empty();
    }

    BusConnection& bus;
    const ScreenFacts& screen;
    const ElementSearch& wanted;
    // Answers that nobody waits for any more may still come to these.
    std::vector<std::unique_ptr<WindowSearch>> searches;
    std::deque<AccessibleNode> roots;
    std::deque<TreeGrower> growers;
};

} // namespace

FoundElements findElements(const ElementSearch& search) {
    const ScreenFacts screen = lookAtScreen(search.ownWindows);
    BusConnection bus(searchLimit, silenceLimit);
    ElementsSearch elements(bus, screen, search);
    elements.found = {screen.monitor, {}};
    if (!openAccessibilityBus(bus))
        return elements.found;
    const auto look = [&] {
        return search.scope == ElementScope::page ? elements.searchPage() : elements.searchWindowAndPanels();
    };
    for (int wakings = 0; !look() && wakings < mostWakings; ++wakings)
        if (!bus.pause(wakingPause))
            break;
    return elements.found;
}

} // namespace rotika
