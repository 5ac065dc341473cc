#pragma once

#include "base/geometry.h"
#include "base/window_handle.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace rotika {

/// Control type of an element in another program's window, with the ids of UI Automation.
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

/// The defaults apply when a property cannot be read: such an element is not labelled.
struct ScreenElement {
    Rect rect; // on the screen
    ControlType type = ControlType::unknown;
    bool isEnabled = false;
    bool isOffscreen = true;
    bool isFocusable = false;

    bool operator==(const ScreenElement&) const = default;
};

enum class ElementScope {
    windowAndTaskbar, // the foreground window, then the taskbar or panel
    page,             // a browser's page, or the foreground window if there is none
};

struct FoundElements;

struct ElementSearch {
    ElementScope scope = ElementScope::windowAndTaskbar;
    std::vector<WindowHandle>
        ownWindows; // never searched; the first one determines the monitor without a foreground window

    /// May be empty. Called repeatedly on the searching thread with the elements found so far, which are
    /// final: the search may end once it returns true.
    std::function<bool(const FoundElements& beginning)> isEnough = {};
};

struct FoundElements {
    Rect area; // the foreground window's monitor, in page scope clipped to the page's window
    std::vector<std::vector<ScreenElement>> roots; // elements below each root, in tree order;
                                                   // open menus first, where the system reports them
};

/// Requests that programs of the session publish their elements, where the system makes that optional;
/// programs started earlier may never do so. In the background. Call before the first search. Any thread.
void prepareElementSearches();

/// Finds the elements that can be clicked or focused, through the system's accessibility service; the result
/// may contain others too. No roots without such a service or if it fails; the area is always valid. A
/// program that does not respond costs a bounded time, and the elements found before are returned. Any thread
/// but the owner's.
FoundElements findElements(const ElementSearch& search);

} // namespace rotika
