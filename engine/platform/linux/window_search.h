#pragma once

#include "platform/elements.h"

#include "platform/linux/accessible_tree.h"
#include "platform/linux/published_windows.h"

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace rotika {

/// A window of the screen, and what its program publishes of it.
struct SearchedWindow {
    WindowFacts facts;
    WindowKind kind = WindowKind::front;
    bool isDecided = false; // whether it is found, and as what
    AccessibleNode root;
    CoordinateFix fix;
    std::unique_ptr<TreeGrower> grower; // null unless it is found
};

/// Looks for the front window and, if wanted, for the open menus and the panels, and for what is on show in
/// them. Must outlive the bus's questions.
class WindowSearch {
public:
    enum class Besides { nothing, menusAndPanels };

    WindowSearch(BusConnection& askedBus, const ScreenFacts& facts, WebPages webPages, Besides besides);

    /// Until everything is found, the time is up, or `isEnough`, which may be empty, says so of the beginning
    /// of what there is: first the menus, then the front window, then the panels.
    void run(const std::function<bool(const FoundElements&)>& isEnough);

    FoundElements found() const;

    /// The front window; its grower is null if it is not published.
    const SearchedWindow& front() const { return *frontWindow; }

private:
    struct Found {
        FoundElements elements;
        std::vector<bool> hasMenu; // of each menu, whether something of it is among them
        bool endsInMenu = false;
    };

    void add(const WindowFacts& facts, WindowKind kind);
    void decide(SearchedWindow& window);
    std::vector<PublishingProgram*> programsOf(const SearchedWindow& window, bool& isProcessKnown);
    bool isOver(const std::function<bool(const FoundElements&)>& isEnough);
    bool isAllKnown() const;
    Found found(Extent extent) const;
    Found foundBeside(const std::vector<Rect>& places, Extent extent) const;
    void askForUnlistedMenus();

    BusConnection& bus;
    const ScreenFacts& screen;
    WebPages pages;
    PublishingPrograms programs;
    std::vector<std::unique_ptr<SearchedWindow>> windows; // in the order of the labels
    std::vector<Rect> menus;
    SearchedWindow* frontWindow = nullptr;
    PublishingProgram* frontProgram = nullptr;
    std::chrono::steady_clock::time_point start;
    std::chrono::steady_clock::time_point nextLook;
    std::chrono::steady_clock::time_point menuPatienceEnd;
    int openGuesses = 0;
    bool hasGuessed = false;
};

} // namespace rotika
