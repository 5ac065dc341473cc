#include "platform/linux/window_search.h"

#include "platform/linux/accessible_requests.h"
#include "platform/linux/unlisted_objects.h"

#include <algorithm>
#include <iterator>

namespace rotika {

namespace {

using Clock = std::chrono::steady_clock;

// For a window whose process is not on the bus all programs are queried, and some may be stopped.
constexpr std::chrono::milliseconds unknownProcessLimit{300};

constexpr std::chrono::milliseconds checkInterval{10};

// For a menu that is not found although there are enough other elements.
constexpr std::chrono::milliseconds menuLimit{1000};

} // namespace

WindowSearch::WindowSearch(BusConnection& usedBus, const ScreenFacts& facts, WebPages webPages,
                           OtherWindows otherWindows)
    : bus(usedBus), screen(facts), pages(webPages), programs(usedBus) {
    if (otherWindows == OtherWindows::menusAndPanels) {
        for (const WindowFacts& menu : screen.menus) {
            add(menu, WindowKind::menu);
            menus.push_back(menu.place);
        }
    }
    if (screen.front) {
        add(*screen.front, WindowKind::front);
        frontWindow = windows.back().get();
    }
    if (otherWindows == OtherWindows::menusAndPanels)
        for (const WindowFacts& panel : screen.panels)
            add(panel, WindowKind::panel);
}

void WindowSearch::add(const WindowFacts& facts, WindowKind kind) {
    windows.push_back(std::make_unique<SearchedWindow>());
    windows.back()->facts = facts;
    windows.back()->kind = kind;
}

void WindowSearch::run(const std::function<bool(const FoundElements&)>& isEnough) {
    programs.load();
    start = nextCheck = Clock::now();
    bus.waitForReplies([&] { return isOver(isEnough); });
}

/// A menu belongs to the front window's program even if the window manager's process id is of no use.
std::vector<PublishingProgram*> WindowSearch::programsOf(const SearchedWindow& window, bool& isProcessKnown) {
    isProcessKnown = programs.hasProcess(window.facts.process);
    if (isProcessKnown || window.kind != WindowKind::menu)
        return programs.ofProcess(window.facts.process);
    if (frontProgram == nullptr || window.facts.process != frontWindow->facts.process)
        return {};
    return {frontProgram};
}

void WindowSearch::match(SearchedWindow& window) {
    // A published window that may be the front window is not matched to another one.
    if (frontWindow != nullptr && &window != frontWindow && !frontWindow->isMatched &&
        window.facts.process == frontWindow->facts.process)
        return;
    bool isProcessKnown = false;
    const std::vector<PublishingProgram*> candidates = programsOf(window, isProcessKnown);
    for (PublishingProgram* program : candidates)
        programs.requestWindows(*program);
    const auto hasAnswered = [](const PublishingProgram* program) { return program->hasAnswered(); };
    if (!std::ranges::all_of(candidates, hasAnswered) &&
        (isProcessKnown || Clock::now() < start + unknownProcessLimit))
        return;
    window.isMatched = true;
    PublishedWindow* chosen = bestMatch(candidates, window.facts, window.kind, isProcessKnown);
    if (chosen == nullptr)
        return;
    chosen->isTaken = true;
    if (&window == frontWindow)
        for (PublishingProgram* program : candidates)
            if (program->root.program == chosen->node.object.program)
                frontProgram = program;
    window.root.object = chosen->node.object;
    window.root.traits = chosen->node.traits;
    window.root.place = chosen->node.place;
    if (chosen->node.place)
        window.fix = coordinateFix(*chosen->node.place, window.facts);
    window.loader = std::make_unique<TreeLoader>(bus, pages, menus.empty() ? Menus::closed : Menus::open);
    window.loader->load(window.root);
}

bool WindowSearch::isComplete() const {
    return pendingGuesses == 0 && std::ranges::all_of(windows, [](const auto& window) {
               return window->isMatched && (window->loader == nullptr || window->loader->isDone());
           });
}

bool WindowSearch::isOver(const std::function<bool(const FoundElements&)>& isEnough) {
    // The front window first: the others depend on it, and there may be no later reply to continue with.
    if (frontWindow != nullptr && !frontWindow->isMatched)
        match(*frontWindow);
    for (const auto& window : windows)
        if (!window->isMatched)
            match(*window);
    const bool isWhole = isComplete();
    if (!isWhole && Clock::now() < nextCheck)
        return false;
    const Found beginning = found(isWhole ? Extent::everything : Extent::beginning);
    nextCheck = Clock::now() + checkInterval;
    if (!isWhole && (beginning.endsInMenu || !isEnough || !isEnough(beginning.elements)))
        return false;
    if (std::ranges::find(beginning.hasMenu, false) == beginning.hasMenu.end())
        return true;
    // A user who has opened a menu wants its entries, wherever the menu is in the tree.
    if (!hasGuessed) {
        hasGuessed = true;
        menuLimitEnd = Clock::now() + menuLimit;
        requestUnlistedMenus();
        return false;
    }
    return isWhole || Clock::now() >= menuLimitEnd;
}

/// Qt's context menus are published, but not in any list of children.
void WindowSearch::requestUnlistedMenus() {
    if (frontProgram == nullptr)
        return;
    for (const BusObject& object :
         unlistedObjects(frontWindow->loader->found(), frontProgram->root.program)) {
        ++pendingGuesses;
        requestRole(bus, object, [this, object](std::uint32_t role) {
            --pendingGuesses;
            if (!AccessibleTraits{role, 0}.isPopupMenu())
                return;
            programs.addWindow(*frontProgram, object);
            for (const auto& window : windows)
                if (window->kind == WindowKind::menu && window->loader == nullptr)
                    window->isMatched = false;
        });
    }
}

FoundElements WindowSearch::found() const {
    return found(Extent::everything).elements;
}

WindowSearch::Found WindowSearch::found(Extent extent) const {
    Found found = foundWithMenus(menus, extent);
    std::vector<Rect> real;
    for (std::size_t i = 0; i < menus.size(); ++i)
        if (found.hasMenu[i])
            real.push_back(menus[i]);
    // A menu window without entries may be a visual effect that clicks pass through: it covers nothing.
    if (real.size() < menus.size())
        found.elements = foundWithMenus(real, extent).elements;
    return found;
}

WindowSearch::Found WindowSearch::foundWithMenus(const std::vector<Rect>& places, Extent extent) const {
    Found found{{screen.monitor, {}}, std::vector<bool>(places.size(), false), false};
    std::vector<std::vector<ScreenElement>> others;
    found.elements.roots.resize(places.size());
    for (const auto& window : windows) {
        if (extent == Extent::beginning && !window->isMatched)
            break;
        if (window->loader == nullptr)
            continue;
        const bool isMenu = window->kind == WindowKind::menu;
        WindowElements below = elementsBelow(window->root, {window->fix, places, isMenu}, extent);
        for (std::size_t i = 0; i < places.size(); ++i) {
            auto& elements = found.elements.roots[i];
            elements.insert(elements.end(), below.menus[i].begin(), below.menus[i].end());
            found.hasMenu[i] = !elements.empty();
        }
        if (!isMenu)
            others.push_back(std::move(below.others));
        found.endsInMenu = below.endsInMenu;
        if (!below.isWhole)
            break;
    }
    std::ranges::move(others, std::back_inserter(found.elements.roots));
    return found;
}

} // namespace rotika
