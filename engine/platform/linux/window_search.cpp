#include "platform/linux/window_search.h"

#include "platform/linux/accessible_questions.h"
#include "platform/linux/unlisted_objects.h"

#include <algorithm>

namespace {

using Clock = std::chrono::steady_clock;

// For a window whose process is not on the bus every program is asked, and some may have stopped.
constexpr std::chrono::milliseconds patience{300};

constexpr std::chrono::milliseconds betweenLooks{10};

} // namespace

WindowSearch::WindowSearch(BusConnection& askedBus, const ScreenFacts& facts, WebPages webPages,
                           Panels panels)
    : bus(askedBus), screen(facts), pages(webPages), programs(askedBus) {
    for (const WindowFacts& menu : screen.menus) {
        add(menu, WindowKind::menu);
        menus.push_back(menu.place);
    }
    if (screen.front) {
        add(*screen.front, WindowKind::front);
        frontWindow = windows.back().get();
    }
    if (panels == Panels::search)
        for (const WindowFacts& panel : screen.panels)
            add(panel, WindowKind::panel);
}

void WindowSearch::add(const WindowFacts& facts, WindowKind kind) {
    windows.push_back(std::make_unique<SearchedWindow>());
    windows.back()->facts = facts;
    windows.back()->kind = kind;
}

void WindowSearch::run(const std::function<bool(const FoundElements&)>& isEnough) {
    programs.ask();
    start = nextLook = Clock::now();
    bus.waitForAnswers([&] { return isOver(isEnough); });
}

/// A menu belongs to the front window's program even if the window manager's number says nothing.
std::vector<PublishingProgram*> WindowSearch::programsOf(const SearchedWindow& window, bool& isProcessKnown) {
    isProcessKnown = programs.hasProcess(window.facts.process);
    if (isProcessKnown || window.kind != WindowKind::menu)
        return programs.ofProcess(window.facts.process);
    if (frontProgram == nullptr || window.facts.process != frontWindow->facts.process)
        return {};
    return {frontProgram};
}

void WindowSearch::decide(SearchedWindow& window) {
    // The front window first: nothing that it may be is taken for another one.
    if (frontWindow != nullptr && &window != frontWindow && !frontWindow->isDecided &&
        window.facts.process == frontWindow->facts.process)
        return;
    bool isProcessKnown = false;
    const std::vector<PublishingProgram*> asked = programsOf(window, isProcessKnown);
    for (PublishingProgram* program : asked)
        programs.askForWindows(*program);
    const auto hasAnswered = [](const PublishingProgram* program) { return program->hasAnswered(); };
    if (!std::ranges::all_of(asked, hasAnswered) && (isProcessKnown || Clock::now() < start + patience))
        return;
    window.isDecided = true;
    PublishedWindow* chosen = likeliestWindow(asked, window.facts, window.kind, isProcessKnown);
    if (chosen == nullptr)
        return;
    chosen->isTaken = true;
    if (&window == frontWindow)
        for (PublishingProgram* program : asked)
            if (program->root.program == chosen->node.object.program)
                frontProgram = program;
    window.root.object = chosen->node.object;
    window.root.traits = chosen->node.traits;
    window.root.place = chosen->node.place;
    if (chosen->node.place)
        window.fix = coordinateFix(*chosen->node.place, window.facts);
    window.grower = std::make_unique<TreeGrower>(bus, pages, menus.empty() ? Menus::closed : Menus::open);
    window.grower->grow(window.root);
}

bool WindowSearch::isAllKnown() const {
    return openGuesses == 0 && std::ranges::all_of(windows, [](const auto& window) {
               return window->isDecided && (window->grower == nullptr || window->grower->isDone());
           });
}

bool WindowSearch::isOver(const std::function<bool(const FoundElements&)>& isEnough) {
    for (const auto& window : windows)
        if (!window->isDecided)
            decide(*window);
    const bool isWhole = isAllKnown();
    if (!isWhole && Clock::now() < nextLook)
        return false;
    const Found beginning = found(isWhole ? Extent::everything : Extent::beginning);
    nextLook = Clock::now() + betweenLooks;
    if (!isWhole && (beginning.endsInMenu || !isEnough || !isEnough(beginning.elements)))
        return false;
    // A menu is what a person wants who has opened it, wherever in the tree it may be.
    if (std::ranges::find(beginning.hasMenu, false) == beginning.hasMenu.end())
        return true;
    if (!hasGuessed && frontProgram != nullptr) {
        askForUnlistedMenus();
        return false;
    }
    return isWhole;
}

/// Qt's context menus are in no list of children, but published all the same.
void WindowSearch::askForUnlistedMenus() {
    hasGuessed = true;
    for (const BusObject& object : unlistedObjects(frontWindow->grower->seen(), frontProgram->root.program)) {
        ++openGuesses;
        askForRole(bus, object, [this, object](std::uint32_t role) {
            --openGuesses;
            if (!AccessibleTraits{role, 0}.isPopupMenu())
                return;
            programs.addWindow(*frontProgram, object);
            for (const auto& window : windows)
                if (window->kind == WindowKind::menu && window->grower == nullptr)
                    window->isDecided = false;
        });
    }
}

FoundElements WindowSearch::found() const {
    return found(Extent::everything).elements;
}

WindowSearch::Found WindowSearch::found(Extent extent) const {
    Found found{{screen.monitor, {}}, std::vector<bool>(menus.size(), false), false};
    std::vector<std::vector<ScreenElement>> ofMenus(menus.size());
    std::vector<std::vector<ScreenElement>> others;
    for (const auto& window : windows) {
        if (extent == Extent::beginning && !window->isDecided)
            break;
        if (window->grower == nullptr)
            continue;
        const bool isMenu = window->kind == WindowKind::menu;
        WindowElements below = elementsBelow(window->root, {window->fix, menus, isMenu}, extent);
        for (std::size_t i = 0; i < menus.size(); ++i)
            ofMenus[i].insert(ofMenus[i].end(), below.menus[i].begin(), below.menus[i].end());
        if (!isMenu)
            others.push_back(std::move(below.others));
        found.endsInMenu = below.endsInMenu;
        if (!below.isWhole)
            break;
    }
    for (std::size_t i = 0; i < menus.size(); ++i) {
        found.hasMenu[i] = !ofMenus[i].empty();
        if (found.hasMenu[i])
            found.elements.roots.push_back(std::move(ofMenus[i]));
    }
    for (auto& elements : others)
        found.elements.roots.push_back(std::move(elements));
    return found;
}
