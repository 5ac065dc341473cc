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
    AccessibleNode node; // without what is below
    std::string name;
    bool isTaken = false; // it is another window of the screen
};

struct PublishingProgram {
    BusObject root;
    pid_t process = 0;
    std::deque<PublishedWindow> windows;
    bool isAsked = false;
    int openQuestions = 0;

    bool hasAnswered() const { return isAsked && openQuestions == 0; }
};

/// The programs on the accessibility bus. Must stay where it is while the bus's answers arrive.
class PublishingPrograms {
public:
    explicit PublishingPrograms(BusConnection& askedBus) : bus(askedBus) {}

    /// Fills the list, without windows; waits for the answers, which no program can hold up.
    void ask();

    /// Nothing from the second time on.
    void askForWindows(PublishingProgram& program);
    /// One that the program's own list leaves out.
    void addWindow(PublishingProgram& program, const BusObject& object);

    /// Those of the process. All of them where it has none: the window manager's number means nothing for a
    /// program in a container.
    std::vector<PublishingProgram*> ofProcess(pid_t process);
    bool hasProcess(pid_t process) const;

private:
    BusConnection& bus;
    std::deque<PublishingProgram> programs;
};

enum class WindowKind { front, menu, panel };

/// The window among those of the programs that is the one of the screen; null if there is none that is likely
/// enough: labels of another window are worse than none. `isProcessKnown`: the programs are of its process.
PublishedWindow* likeliestWindow(const std::vector<PublishingProgram*>& programs, const WindowFacts& facts,
                                 WindowKind kind, bool isProcessKnown);

} // namespace rotika
