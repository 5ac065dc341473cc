#pragma once

#include "base/geometry.h"
#include "base/window_handle.h"

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace rotika {

/// Facts about another program's window from the X server and the window manager.
struct WindowFacts {
    Rect place;                                // without the window manager's frame
    Rect frame;                                // with it
    pid_t process = 0;                         // 0: unknown
    std::string title;                         // UTF-8
    std::vector<std::string> otherTitles = {}; // of the process's other windows; for the one in front only
};

struct ScreenFacts {
    Rect monitor; // of the window in front
    std::optional<WindowFacts> front;
    std::vector<WindowFacts> panels;
    std::vector<WindowFacts> menus; // open menus of these programs, topmost first
};

/// The window in front, unless it is one of `ownWindows`, the visible panels, and open menus. Any thread;
/// opens a connection of its own.
ScreenFacts readScreen(const std::vector<WindowHandle>& ownWindows);

} // namespace rotika
