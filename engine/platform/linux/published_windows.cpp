#include "platform/linux/published_windows.h"

#include "platform/linux/accessibility.h"
#include "platform/linux/accessible_requests.h"

#include <algorithm>

namespace rotika {

namespace {

// Per side on average: some programs include frames and shadows, others do not.
constexpr std::int32_t windowTolerancePx = 75;
constexpr std::int32_t menuTolerancePx = 15;

struct Match {
    bool hasTitle = false;
    bool hasPlace = false;
    bool isActive = false;
    bool isShowing = false;
    bool isOtherWindow = false; // its name is another window's title

    int rank() const {
        return (hasTitle ? 4 : 0) + (hasPlace ? 4 : 0) + (isActive ? 2 : 0) + (isShowing ? 1 : 0);
    }
};

/// Qt's window titles have a suffix after the name.
bool isOtherWindow(const std::string& name, const WindowFacts& facts) {
    return !name.empty() && !facts.title.starts_with(name) &&
           std::ranges::any_of(facts.otherTitles,
                               [&name](const std::string& title) { return title.starts_with(name); });
}

Match matchOf(const PublishedWindow& window, const WindowFacts& facts, WindowKind kind) {
    const std::int32_t tolerancePx = kind == WindowKind::menu ? menuTolerancePx : windowTolerancePx;
    const AccessibleNode& node = window.node;
    return {!window.name.empty() && window.name == facts.title,
            node.place && isPlaceOf(*node.place, facts, tolerancePx),
            kind == WindowKind::front && node.traits.isActive(), node.traits.isShowing(),
            isOtherWindow(window.name, facts)};
}

bool isGoodMatch(const Match& match, WindowKind kind, bool isProcessKnown) {
    if (kind == WindowKind::menu)
        return match.hasPlace && match.isShowing;
    // A full-screen picture may be unpublished while the window behind it is published.
    if (match.isOtherWindow && !match.isActive)
        return false;
    const int count = (match.hasTitle ? 1 : 0) + (match.hasPlace ? 1 : 0) + (match.isActive ? 1 : 0);
    // Full-screen windows share one place, and titles may be equal.
    return isProcessKnown ? count >= 1 : count >= 2 && match.isShowing;
}

} // namespace

void PublishingPrograms::load() {
    requestChildren(bus, accessibilityDesktop(), [this](const std::vector<BusObject>& roots) {
        for (const BusObject& root : roots)
            programs.push_back({root, 0, {}});
        for (PublishingProgram& program : programs)
            requestProcess(bus, program.root.program,
                           [&program](pid_t process) { program.process = process; });
    });
    bus.waitForReplies();
}

void PublishingPrograms::requestWindows(PublishingProgram& program) {
    if (program.areWindowsRequested)
        return;
    program.areWindowsRequested = true;
    ++program.pendingCalls;
    requestChildren(bus, program.root, [this, &program](const std::vector<BusObject>& windows) {
        for (const BusObject& window : windows)
            addWindow(program, window);
        --program.pendingCalls;
    });
}

void PublishingPrograms::addWindow(PublishingProgram& program, const BusObject& object) {
    PublishedWindow& window = program.windows.emplace_back();
    window.node.object = object;
    program.pendingCalls += 4;
    requestRole(bus, object, [&](std::uint32_t role) {
        window.node.traits.role = role;
        --program.pendingCalls;
    });
    requestStates(bus, object, [&](std::uint64_t states) {
        window.node.traits.states = states;
        --program.pendingCalls;
    });
    requestName(bus, object, [&](const std::string& name) {
        window.name = name;
        --program.pendingCalls;
    });
    requestPlace(bus, object, [&](const std::optional<Rect>& place) {
        window.node.place = place;
        --program.pendingCalls;
    });
}

bool PublishingPrograms::hasProcess(pid_t process) const {
    return process != 0 && std::ranges::any_of(programs, [process](const PublishingProgram& program) {
               return program.process == process;
           });
}

std::vector<PublishingProgram*> PublishingPrograms::ofProcess(pid_t process) {
    const bool isKnown = hasProcess(process);
    std::vector<PublishingProgram*> chosen;
    for (PublishingProgram& program : programs)
        if (!isKnown || program.process == process)
            chosen.push_back(&program);
    return chosen;
}

PublishedWindow* bestMatch(const std::vector<PublishingProgram*>& programs, const WindowFacts& facts,
                           WindowKind kind, bool isProcessKnown) {
    PublishedWindow* best = nullptr;
    int bestRank = 0;
    for (PublishingProgram* program : programs) {
        for (PublishedWindow& window : program->windows) {
            const Match match = matchOf(window, facts, kind);
            if (!window.isTaken && isGoodMatch(match, kind, isProcessKnown) && match.rank() > bestRank) {
                best = &window;
                bestRank = match.rank();
            }
        }
    }
    return best;
}

} // namespace rotika
