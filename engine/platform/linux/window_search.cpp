#include "platform/linux/window_search.h"

#include "platform/linux/accessible_questions.h"
#include "platform/linux/unlisted_objects.h"

#include <algorithm>
#include <iterator>

namespace rotika {

namespace {

using Clock = std::chrono::steady_clock;

// For a window whose process is not on the bus every program is asked, and some may have stopped.
constexpr std::chrono::milliseconds patience{300};

constexpr std::chrono::milliseconds betweenLooks{10};

// For a menu that is not found where there is enough besides.
constexpr std::chrono::milliseconds menuPatience{1000};

} // namespace

WindowSearch::WindowSearch(BusConnection& askedBus, const ScreenFacts& facts, WebPages webPages,
                           Besides besides)
    : bus(askedBus), screen(facts), pages(webPages), programs(askedBus) {
    if (besides == Besides::menusAndPanels) {
        for (const WindowFacts& menu : screen.menus) {
            add(menu, WindowKind::menu);
            menus.push_back(menu.place);
        }
    }
    if (screen.front) {
        add(*screen.front, WindowKind::front);
        frontWindow = windows.back().get();
    }
    if (besides == Besides::menusAndPanels)
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
    // Nothing that the front window may be is taken for another one.
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
    // The front window first: the others wait for it, and nothing may be left to be answered after it.
    if (frontWindow != nullptr && !frontWindow->isDecided)
        decide(*frontWindow);
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
    if (std::ranges::find(beginning.hasMenu, false) == beginning.hasMenu.end())
        return true;
    // A menu is what a person wants who has opened it, wherever in the tree it may be.
    if (!hasGuessed) {
        hasGuessed = true;
        menuPatienceEnd = Clock::now() + menuPatience;
        askForUnlistedMenus();
        return false;
    }
    return isWhole || Clock::now() >= menuPatienceEnd;
}

/// Qt's context menus are in no list of children, but published all the same.
void WindowSearch::askForUnlistedMenus() {
    if (frontProgram == nullptr)
        return;
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
    Found found = foundBeside(menus, extent);
    std::vector<Rect> real;
    for (std::size_t i = 0; i < menus.size(); ++i)
        if (found.hasMenu[i])
            real.push_back(menus[i]);
    // What holds nothing may be a mere effect, which clicks pass through: it hides nothing.
    if (real.size() < menus.size())
        found.elements = foundBeside(real, extent).elements;
    return found;
}

WindowSearch::Found WindowSearch::foundBeside(const std::vector<Rect>& places, Extent extent) const {
    Found found{{screen.monitor, {}}, std::vector<bool>(places.size(), false), false};
    std::vector<std::vector<ScreenElement>> others;
    found.elements.roots.resize(places.size());
    for (const auto& window : windows) {
        if (extent == Extent::beginning && !window->isDecided)
            break;
        if (window->grower == nullptr)
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
