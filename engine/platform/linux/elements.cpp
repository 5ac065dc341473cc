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

// The cost of a program that hangs, and of a slow one that keeps replying.
constexpr std::chrono::milliseconds replyLimit{1500};
constexpr std::chrono::milliseconds searchLimit{4000};

// Some browsers start to publish a window's contents only after a first call.
constexpr std::chrono::milliseconds retryPause{150};
constexpr int maxRetries = 4;

constexpr std::chrono::milliseconds checkInterval{10};

// How long to look for a page in a window that has enough elements without one.
constexpr std::chrono::milliseconds pageLimit{1500};

// Smaller documents are advertisements, tool tips and the like.
constexpr std::int32_t minPageSidePx = 200;

Rect clippedTo(const Rect& area, const Rect& page) {
    const Rect cut{std::max(area.left, page.left), std::max(area.top, page.top),
                   std::min(area.right, page.right), std::min(area.bottom, page.bottom)};
    return cut.width() > 0 && cut.height() > 0 ? cut : area;
}

/// The visible area of a page in square pixels; 0 if the node is not a page.
std::int64_t visiblePageArea(const AccessibleNode& node, const CoordinateFix& fix, const Rect& window) {
    if (!node.traits.isWebPage() || !node.traits.isShowing() || !node.place)
        return 0;
    const Rect place = clippedTo(fix.applied(*node.place), window);
    const bool isPage = place.width() > minPageSidePx && place.height() > minPageSidePx;
    return isPage ? std::int64_t{place.width()} * place.height() : 0;
}

class ElementsSearch {
public:
    ElementsSearch(BusConnection& usedBus, const ScreenFacts& facts, const ElementSearch& wantedElements)
        : bus(usedBus), screen(facts), wanted(wantedElements) {}

    /// False if the window in front is published, but without contents.
    bool searchWindowAndPanels() {
        WindowSearch& search = startSearch(WebPages::include, WindowSearch::OtherWindows::menusAndPanels);
        search.run(wanted.isEnough);
        found = search.found();
        return !screen.front || search.front().loader == nullptr ||
               !elementsBelow(search.front().root, {}, Extent::everything).others.empty();
    }

    /// False as for searchWindowAndPanels().
    bool searchPage() {
        found = {screen.monitor, {}};
        if (!screen.front)
            return true;
        WindowSearch& search = startSearch(WebPages::skip, WindowSearch::OtherWindows::none);
        const Clock::time_point pageLimitEnd = Clock::now() + pageLimit;
        search.run([&](const FoundElements& firstElements) {
            return wanted.isEnough && Clock::now() >= pageLimitEnd && wanted.isEnough(firstElements);
        });
        const SearchedWindow& window = search.front();
        if (window.loader == nullptr)
            return true;
        // Side bars may be web documents too: take the largest.
        const AccessibleNode* page = bestDescendant(window.root, [&](const AccessibleNode& node) {
            return visiblePageArea(node, window.fix, window.facts.place);
        });
        if (page != nullptr)
            return searchBelow(*page, window.fix);
        const AccessibleNode* document = bestDescendant(window.root, [](const AccessibleNode& node) {
            return node.traits.type() == ControlType::document ? 1 : 0;
        });
        updateFound(document != nullptr ? *document : window.root, window.fix, Extent::everything);
        return !found.roots.front().empty();
    }

    FoundElements found;

private:
    WindowSearch& startSearch(WebPages pages, WindowSearch::OtherWindows otherWindows) {
        searches.push_back(std::make_unique<WindowSearch>(bus, screen, pages, otherWindows));
        return *searches.back();
    }

    /// Replaces the found elements by those loaded below the root.
    void updateFound(const AccessibleNode& root, const CoordinateFix& fix, Extent extent) {
        found.roots = {elementsBelow(root, {fix, {}, false}, extent).others};
    }

    bool searchBelow(const AccessibleNode& page, const CoordinateFix& fix) {
        found.area = clippedTo(found.area, fix.applied(*page.place));
        AccessibleNode& root = roots.emplace_back();
        root.object = page.object;
        root.traits = page.traits;
        root.place = page.place;
        TreeLoader& loader = loaders.emplace_back(bus, WebPages::include, Menus::closed);
        loader.load(root);
        Clock::time_point nextCheck = Clock::now();
        bus.waitForReplies([&] {
            if (loader.isDone() || Clock::now() < nextCheck)
                return loader.isDone();
            updateFound(root, fix, Extent::beginning);
            nextCheck = Clock::now() + checkInterval;
            return wanted.isEnough && wanted.isEnough(found);
        });
        updateFound(root, fix, Extent::everything);
        return !found.roots.front().empty();
    }

    BusConnection& bus;
    const ScreenFacts& screen;
    const ElementSearch& wanted;
    // Kept until the end: late replies may still use them.
    std::vector<std::unique_ptr<WindowSearch>> searches;
    std::deque<AccessibleNode> roots;
    std::deque<TreeLoader> loaders;
};

} // namespace

FoundElements findElements(const ElementSearch& search) {
    const ScreenFacts screen = readScreen(search.ownWindows);
    BusConnection bus(searchLimit, replyLimit);
    ElementsSearch elements(bus, screen, search);
    elements.found = {screen.monitor, {}};
    if (!openAccessibilityBus(bus))
        return elements.found;
    const auto searchOnce = [&] {
        return search.scope == ElementScope::page ? elements.searchPage() : elements.searchWindowAndPanels();
    };
    for (int retries = 0; !searchOnce() && retries < maxRetries; ++retries)
        if (!bus.pause(retryPause))
            break;
    return elements.found;
}

} // namespace rotika
