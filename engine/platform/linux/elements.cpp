#include "platform/elements.h"

#include "platform/linux/accessibility.h"
#include "platform/linux/accessible_questions.h"
#include "platform/linux/accessible_tree.h"
#include "platform/linux/front_window.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

// For everything: a program that hangs costs no more than this.
constexpr std::chrono::milliseconds searchLimit{1500};

// Some browsers only begin to publish what a window holds when they are first asked.
constexpr std::chrono::milliseconds wakingPause{150};
constexpr int mostWakings = 4;

// Smaller ones are advertisements, tool tips and the like.
constexpr std::int32_t leastPageSidePx = 200;

struct Program {
    BusObject root;
    pid_t process = 0;
    std::vector<BusObject> windows;
};

std::vector<Program> askForPrograms(BusConnection& bus) {
    std::vector<Program> programs;
    askForChildren(bus, accessibilityDesktop(), [&](const std::vector<BusObject>& roots) {
        for (const BusObject& root : roots)
            programs.push_back({root, 0, {}});
        for (Program& program : programs)
            askForProcess(bus, program.root.program,
                          [&program](pid_t process) { program.process = process; });
    });
    bus.waitForAnswers();
    return programs;
}

std::int32_t distance(const Rect& a, const Rect& b) {
    return std::abs(a.left - b.left) + std::abs(a.top - b.top) + std::abs(a.right - b.right) +
           std::abs(a.bottom - b.bottom);
}

/// Finds a window of the screen among what the programs publish, and what is on show in it. Everything
/// happens while the bus's answers arrive; it must stay in its place until then.
class WindowSearch {
public:
    WindowSearch(BusConnection& askedBus, const WindowFacts& wanted, WebPages pages)
        : bus(askedBus), facts(wanted), grower(askedBus, pages) {}

    void start(const std::vector<Program>& programs) {
        const auto isIts = [this](const Program& program) { return program.process == facts.process; };
        // The window manager's number means nothing for a program in a container.
        const bool isKnown = facts.process != 0 && std::ranges::any_of(programs, isIts);
        for (const Program& program : programs) {
            if (isKnown && !isIts(program))
                continue;
            ++openQuestions;
            askForChildren(bus, program.root, [this](const std::vector<BusObject>& windows) {
                for (const BusObject& window : windows)
                    judge(window);
                answered();
            });
        }
    }

    bool isFound() const { return chosen != nullptr; }
    const AccessibleNode& window() const { return chosen->node; }

    CoordinateFix fix() const {
        const Rect& real = facts.place;
        const Rect said = chosen->node.place.value_or(real);
        const double scaleX = static_cast<double>(real.width()) / said.width();
        const double scaleY = static_cast<double>(real.height()) / said.height();
        // Scales are known to be of at least a quarter; what is nearer to one is a shadow around the window.
        const bool isScaled = scaleX > 1.2 && std::abs(scaleX - scaleY) < 0.05 * scaleX;
        if (isScaled)
            return {{said.left, said.top}, {real.left, real.top}, scaleX};
        return {};
    }

private:
    struct Candidate {
        AccessibleNode node;
        int likeness = 0;
    };

    void judge(const BusObject& window) {
        candidates.push_back(std::make_unique<Candidate>());
        Candidate& candidate = *candidates.back();
        candidate.node.object = window;
        openQuestions += 4;
        askForRole(bus, window, [this, &candidate](std::uint32_t role) {
            candidate.node.traits.role = role;
            answered();
        });
        askForStates(bus, window, [this, &candidate](std::uint64_t states) {
            candidate.node.traits.states = states;
            candidate.likeness += candidate.node.traits.isShowing() ? 1 : 0;
            candidate.likeness += candidate.node.traits.isActive() ? 2 : 0;
            answered();
        });
        askForName(bus, window, [this, &candidate](const std::string& name) {
            candidate.likeness += !name.empty() && name == facts.title ? 4 : 0;
            answered();
        });
        askForPlace(bus, window, [this, &candidate](const std::optional<Rect>& place) {
            constexpr std::int32_t frameAndShadowPx = 300; // of all four sides together
            candidate.node.place = place;
            candidate.likeness += place && distance(*place, facts.place) < frameAndShadowPx ? 4 : 0;
            answered();
        });
    }

    void answered() {
        if (--openQuestions > 0)
            return;
        for (const auto& candidate : candidates)
            if (candidate->likeness > 0 && (chosen == nullptr || candidate->likeness > chosen->likeness))
                chosen = candidate.get();
        if (chosen != nullptr)
            grower.grow(chosen->node);
    }

    BusConnection& bus;
    const WindowFacts& facts;
    TreeGrower grower;
    std::vector<std::unique_ptr<Candidate>> candidates;
    Candidate* chosen = nullptr;
    int openQuestions = 0;
};

Rect cutTo(const Rect& area, const Rect& page) {
    const Rect cut{std::max(area.left, page.left), std::max(area.top, page.top),
                   std::min(area.right, page.right), std::min(area.bottom, page.bottom)};
    return cut.width() > 0 && cut.height() > 0 ? cut : area;
}

/// False if the window in front is published, but nothing of what it holds.
bool searchWindowAndPanels(BusConnection& bus, const ScreenFacts& screen, FoundElements& found) {
    std::vector<std::unique_ptr<WindowSearch>> searches;
    if (screen.front)
        searches.push_back(std::make_unique<WindowSearch>(bus, *screen.front, WebPages::enter));
    for (const WindowFacts& panel : screen.panels)
        searches.push_back(std::make_unique<WindowSearch>(bus, panel, WebPages::enter));
    const std::vector<Program> programs = askForPrograms(bus);
    for (const auto& search : searches)
        search->start(programs);
    bus.waitForAnswers();
    for (const auto& search : searches)
        if (search->isFound())
            found.roots.push_back(elementsBelow(search->window(), search->fix()));
    return !screen.front || !searches.front()->isFound() || !found.roots.front().empty();
}

/// False as above.
bool searchPage(BusConnection& bus, const ScreenFacts& screen, FoundElements& found) {
    if (!screen.front)
        return true;
    WindowSearch search(bus, *screen.front, WebPages::leaveOut);
    search.start(askForPrograms(bus));
    bus.waitForAnswers();
    if (!search.isFound())
        return true;
    const CoordinateFix fix = search.fix();
    const AccessibleNode* page = findBelow(search.window(), [&fix](const AccessibleNode& node) {
        const Rect place = node.place ? fix.applied(*node.place) : Rect{};
        return node.traits.isWebPage() && node.traits.isShowing() && place.width() > leastPageSidePx &&
               place.height() > leastPageSidePx;
    });
    if (page != nullptr) {
        found.area = cutTo(found.area, fix.applied(*page->place));
        AccessibleNode root{page->object, page->traits, page->place, nullptr, {}};
        TreeGrower grower(bus, WebPages::enter);
        grower.grow(root);
        bus.waitForAnswers();
        found.roots.push_back(elementsBelow(root, fix));
        return !found.roots.front().empty();
    }
    const AccessibleNode* document = findBelow(search.window(), [](const AccessibleNode& node) {
        return node.traits.type() == ControlType::document;
    });
    found.roots.push_back(elementsBelow(document != nullptr ? *document : search.window(), fix));
    return !found.roots.front().empty();
}

} // namespace

FoundElements findElements(const ElementSearch& search) {
    const ScreenFacts screen = lookAtScreen(search.ownWindows);
    FoundElements found{screen.monitor, {}};
    BusConnection bus(searchLimit);
    if (!openAccessibilityBus(bus))
        return found;
    const auto searchScope = search.scope == ElementScope::page ? searchPage : searchWindowAndPanels;
    for (int wakings = 0; !searchScope(bus, screen, found) && wakings < mostWakings; ++wakings) {
        if (!bus.pause(wakingPause))
            break;
        found = {screen.monitor, {}};
    }
    return found;
}
