#pragma once

#include "platform/linux/accessible_tree.h"
#include "platform/linux/bus_connection.h"
#include "platform/linux/front_window.h"

#include <sys/types.h>

#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace rotika {

/// A window as its program publishes it.
struct PublishedWindow {
    AccessibleNode node; // without children
    std::string name;
    bool isTaken = false; // already matched to a window of the screen
};

struct PublishingProgram {
    BusObject root;
    pid_t process = 0;
    std::deque<PublishedWindow> windows;
    bool areWindowsRequested = false;
    int pendingCalls = 0;

    bool hasAnswered() const { return areWindowsRequested && pendingCalls == 0; }
};

/// The programs on the accessibility bus. Must not move while the bus's replies arrive.
class PublishingPrograms {
public:
    explicit PublishingPrograms(BusConnection& usedBus) : bus(usedBus) {}

    /// Fills the list, without windows; waits for the bus's replies, which no program can delay.
    void load();

    /// Does nothing after the first call for a program.
    void requestWindows(PublishingProgram& program);
    /// Adds a window that is missing from the program's own list.
    void addWindow(PublishingProgram& program, const BusObject& object);

    /// The programs of the process, or all if it has none: for a program in a container the window manager's
    /// process id is wrong.
    std::vector<PublishingProgram*> ofProcess(pid_t process);
    bool hasProcess(pid_t process) const;

private:
    BusConnection& bus;
    std::deque<PublishingProgram> programs;
};

enum class WindowKind { front, menu, panel };

/// The published window that best matches the window of the screen; null if none matches well enough: labels
/// of another window are worse than none. `isProcessKnown`: the programs belong to its process.
PublishedWindow* bestMatch(const std::vector<PublishingProgram*>& programs, const WindowFacts& facts,
                           WindowKind kind, bool isProcessKnown);

} // namespace rotika
