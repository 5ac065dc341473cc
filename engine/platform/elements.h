#pragma once

#include "base/geometry.h"
#include "base/window_handle.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace rotika {

/// What kind of control an element of another program's window is, numbered as UI Automation does.
enum class ControlType : std::int32_t {
    unknown = 0,
    button = 50000,
    checkBox = 50002,
    comboBox = 50003,
    edit = 50004,
    hyperlink = 50005,
    listItem = 50007,
    menuItem = 50011,
    radioButton = 50013,
    slider = 50015,
    spinner = 50016,
    tabItem = 50019,
    treeItem = 50024,
    document = 50030,
    splitButton = 50031,
    window = 50032,
    pane = 50033,
};

/// Defaults are what counts when a property cannot be had: such an element is passed over.
struct ScreenElement {
    Rect rect; // on the screen
    ControlType type = ControlType::unknown;
    bool isEnabled = false;
    bool isOffscreen = true;
    bool isFocusable = false;

    bool operator==(const ScreenElement&) const = default;
};

enum class ElementScope {
    windowAndTaskbar, // everything in the window in front, then the taskbar or panel
    page,             // the page that a browser shows; the window in front where there is none
};

struct FoundElements;

struct ElementSearch {
    ElementScope scope = ElementScope::windowAndTaskbar;
    std::vector<WindowHandle>
        ownWindows; // never searched; the first one names the monitor if none is in front

    /// May be empty. Asked now and then, on the searching thread, about the beginning of what will be found,
    /// which the rest will not change: the search may end once it says so.
    std::function<bool(const FoundElements& beginning)> isEnough = {};
};

struct FoundElements {
    Rect area; // the monitor of the window in front, in page scope cut down to the page's window
    std::vector<std::vector<ScreenElement>> roots; // what lies below each root, in the order of the tree;
                                                   // open menus first, where the system tells them apart
};

/// Asks the programs of the session to publish what their windows hold, where the system leaves that to them:
/// those that start before may never do it. In the background. Called when the first search may come. Any
/// thread.
void prepareElementSearches();

/// Asks the accessibility service of the system for the elements that can be clicked or focused; it may give
/// others too. There are no roots where there is no such service or it fails; the area stands all the same. A
/// program that does not answer costs a bounded time, and what was found until then counts. Any thread but
/// the owner's.
FoundElements findElements(const ElementSearch& search);

} // namespace rotika
