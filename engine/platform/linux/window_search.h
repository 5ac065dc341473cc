#pragma once

#include "platform/elements.h"

#include "platform/linux/accessible_tree.h"
#include "platform/linux/published_windows.h"

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace rotika {

/// A window of the screen and its published contents.
struct SearchedWindow {
    WindowFacts facts;
    WindowKind kind = WindowKind::front;
    bool isMatched = false; // whether it is published, and as which window
    AccessibleNode root;
    CoordinateFix fix;
    std::unique_ptr<TreeLoader> loader; // null unless it is found
};

/// Finds the front window and, if wanted, the open menus and the panels, and their visible elements. Must
/// outlive the bus's calls.
class WindowSearch {
public:
    enum class OtherWindows { none, menusAndPanels };

    WindowSearch(BusConnection& usedBus, const ScreenFacts& facts, WebPages webPages,
                 OtherWindows otherWindows);

    /// Returns when everything is found, the time is up, or `isEnough`, which may be empty, accepts the
    /// beginning of the result: first the menus, then the front window, then the panels.
    void run(const std::function<bool(const FoundElements&)>& isEnough);

    FoundElements found() const;

    /// The front window; its loader is null if it is not published.
    const SearchedWindow& front() const { return *frontWindow; }

private:
    struct Found {
        FoundElements elements;
        std::vector<bool> hasMenu; // for each menu, whether it has elements among these
        bool endsInMenu = false;
    };

    void add(const WindowFacts& facts, WindowKind kind);
    void match(SearchedWindow& window);
    std::vector<PublishingProgram*> programsOf(const SearchedWindow& window, bool& isProcessKnown);
    bool isOver(const std::function<bool(const FoundElements&)>& isEnough);
    bool isComplete() const;
    Found found(Extent extent) const;
    Found foundWithMenus(const std::vector<Rect>& places, Extent extent) const;
    void requestUnlistedMenus();

    BusConnection& bus;
    const ScreenFacts& screen;
    WebPages pages;
    PublishingPrograms programs;
    std::vector<std::unique_ptr<SearchedWindow>> windows; // in the order of the labels
    std::vector<Rect> menus;
    SearchedWindow* frontWindow = nullptr;
    PublishingProgram* frontProgram = nullptr;
    std::chrono::steady_clock::time_point start;
    std::chrono::steady_clock::time_point nextCheck;
    std::chrono::steady_clock::time_point menuLimitEnd;
    int pendingGuesses = 0;
    bool hasGuessed = false;
};

} // namespace rotika
