#include "platform/linux/front_window.h"

#include "platform/linux/x11.h"

#include <algorithm>
#include <array>

namespace rotika {

namespace {

struct DisplayDeleter {
    void operator()(Display* display) const noexcept { XCloseDisplay(display); }
};
using OwnDisplay = std::unique_ptr<Display, DisplayDeleter>;

struct PropertyValue {
    XOwned<unsigned char> data;
    unsigned long count = 0;
    int format = 0;
};

PropertyValue propertyOf(Display* display, Window window, const char* name) {
    constexpr long mostWords = 4096;
    PropertyValue value;
    Atom type = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    const int failure = XGetWindowProperty(display, window, XInternAtom(display, name, 0), 0, mostWords, 0,
                                           AnyPropertyType, &type, &value.format, &value.count, &left, &data);
    value.data.reset(data);
    if (failure != 0 || data == nullptr)
        value.count = 0;
    return value;
}

/// Windows, atoms or numbers.
std::vector<unsigned long> numbersOf(Display* display, Window window, const char* name) {
    const PropertyValue value = propertyOf(display, window, name);
    if (value.format != 32)
        return {};
    const auto* numbers = reinterpret_cast<const unsigned long*>(value.data.get());
    return {numbers, numbers + value.count};
}

std::string titleOf(Display* display, Window window) {
    PropertyValue value = propertyOf(display, window, "_NET_WM_NAME");
    if (value.count == 0)
        value = propertyOf(display, window, "WM_NAME");
    if (value.format != 8)
        return {};
    return {reinterpret_cast<const char*>(value.data.get()), value.count};
}

/// 0 if the window does not tell.
pid_t processOf(Display* display, Window window) {
    const std::vector<unsigned long> process = numbersOf(display, window, "_NET_WM_PID");
    return process.empty() ? 0 : static_cast<pid_t>(process.front());
}

struct Placed {
    Rect place;
    bool isOnShow = false;
    bool isUnmanaged = false; // the window manager has no say in it, as in menus and tool tips
};

/// Nothing for a window that is gone.
std::optional<Placed> placeOf(Display* display, Window window) {
    XWindowAttributes attributes;
    Window child = noXid;
    int x = 0;
    int y = 0;
    if (window == noXid || XGetWindowAttributes(display, window, &attributes) == 0 ||
        XTranslateCoordinates(display, window, DefaultRootWindow(display), 0, 0, &x, &y, &child) == 0)
        return std::nullopt;
    return Placed{{x, y, x + attributes.width, y + attributes.height},
                  attributes.map_state == IsViewable && attributes.c_class == InputOutput,
                  attributes.override_redirect != 0};
}

/// Nothing for a window that is gone or not on show.
std::optional<WindowFacts> factsOf(Display* display, Window window) {
    const std::optional<Placed> placed = placeOf(display, window);
    if (!placed || !placed->isOnShow)
        return std::nullopt;
    WindowFacts facts{placed->place, placed->place, 0, titleOf(display, window)};
    const std::vector<unsigned long> extents = numbersOf(display, window, "_NET_FRAME_EXTENTS");
    if (extents.size() == 4) {
        facts.frame.left -= static_cast<std::int32_t>(extents[0]);
        facts.frame.right += static_cast<std::int32_t>(extents[1]);
        facts.frame.top -= static_cast<std::int32_t>(extents[2]);
        facts.frame.bottom += static_cast<std::int32_t>(extents[3]);
    }
    facts.process = processOf(display, window);
    return facts;
}

Window activeWindow(Display* display) {
    const std::vector<unsigned long> active =
        numbersOf(display, DefaultRootWindow(display), "_NET_ACTIVE_WINDOW");
    return active.empty() ? noXid : static_cast<Window>(active.front());
}

std::vector<std::string> otherTitlesOf(Display* display, pid_t process, Window window) {
    std::vector<std::string> titles;
    for (const unsigned long other : numbersOf(display, DefaultRootWindow(display), "_NET_CLIENT_LIST"))
        if (other != window && process != 0 && processOf(display, other) == process)
            titles.push_back(titleOf(display, other));
    return titles;
}

std::vector<WindowFacts> panelsOn(Display* display) {
    const Atom dock = XInternAtom(display, "_NET_WM_WINDOW_TYPE_DOCK", 0);
    std::vector<WindowFacts> panels;
    for (const unsigned long window : numbersOf(display, DefaultRootWindow(display), "_NET_CLIENT_LIST")) {
        const std::vector<unsigned long> types = numbersOf(display, window, "_NET_WM_WINDOW_TYPE");
        if (std::ranges::find(types, dock) == types.end())
            continue;
        if (const auto facts = factsOf(display, window))
            panels.push_back(*facts);
    }
    return panels;
}

bool isMenu(Display* display, Window window, const Placed& placed) {
    constexpr std::int32_t leastSidePx = 8;
    if (!placed.isOnShow || !placed.isUnmanaged || placed.place.width() < leastSidePx ||
        placed.place.height() < leastSidePx || placed.place.right <= 0 || placed.place.bottom <= 0)
        return false;
    // Not every toolkit says that a menu is one.
    const std::vector<unsigned long> types = numbersOf(display, window, "_NET_WM_WINDOW_TYPE");
    constexpr std::array others{"_NET_WM_WINDOW_TYPE_TOOLTIP", "_NET_WM_WINDOW_TYPE_NOTIFICATION",
                                "_NET_WM_WINDOW_TYPE_DND",     "_NET_WM_WINDOW_TYPE_SPLASH",
                                "_NET_WM_WINDOW_TYPE_DOCK",    "_NET_WM_WINDOW_TYPE_DESKTOP"};
    return std::ranges::none_of(others, [&](const char* type) {
        return std::ranges::find(types, XInternAtom(display, type, 0)) != types.end();
    });
}

std::vector<WindowFacts> menusOn(Display* display, const ScreenFacts& facts, Window active,
                                 const std::vector<WindowHandle>& ownWindows) {
    const auto isOfTheirs = [&facts](const WindowFacts& menu) {
        const auto isIts = [&menu](const WindowFacts& other) { return other.process == menu.process; };
        return menu.process != 0 &&
               ((facts.front && isIts(*facts.front)) || std::ranges::any_of(facts.panels, isIts));
    };
    Window root = noXid;
    Window parent = noXid;
    Window* windows = nullptr;
    unsigned count = 0;
    std::vector<WindowFacts> menus;
    if (XQueryTree(display, DefaultRootWindow(display), &root, &parent, &windows, &count) == 0)
        return menus;
    const XOwned<Window> owned(windows);
    for (unsigned i = count; i-- > 0;) { // the topmost comes last
        const std::optional<Placed> placed = placeOf(display, windows[i]);
        if (!placed || windows[i] == active || !isMenu(display, windows[i], *placed) ||
            std::ranges::find(ownWindows, handleOf(windows[i])) != ownWindows.end())
            continue;
        const auto menu = factsOf(display, windows[i]);
        if (menu && isOfTheirs(*menu))
            menus.push_back(*menu);
    }
    return menus;
}

/// The monitor that holds the middle of the window, or the primary one.
Rect monitorOf(Display* display, Window window) {
    const std::optional<Placed> placed = placeOf(display, window);
    const int screen = DefaultScreen(display);
    Rect chosen{0, 0, DisplayWidth(display, screen), DisplayHeight(display, screen)};
    int count = 0;
    XRRMonitorInfo* infos = XRRGetMonitors(display, DefaultRootWindow(display), 1, &count);
    bool holdsMiddle = false;
    for (int i = 0; i < count && !holdsMiddle; ++i) {
        const Rect monitor{infos[i].x, infos[i].y, infos[i].x + infos[i].width, infos[i].y + infos[i].height};
        holdsMiddle = placed && monitor.contains({(placed->place.left + placed->place.right) / 2,
                                                  (placed->place.top + placed->place.bottom) / 2});
        if (holdsMiddle || infos[i].primary != 0 || i == 0)
            chosen = monitor;
    }
    if (infos != nullptr)
        XRRFreeMonitors(infos);
    return chosen;
}

} // namespace

ScreenFacts lookAtScreen(const std::vector<WindowHandle>& ownWindows) {
    ScreenFacts facts;
    const OwnDisplay display(XOpenDisplay(nullptr));
    if (display == nullptr)
        return facts;
    const Window active = activeWindow(display.get());
    const Window own = ownWindows.empty() ? noXid : windowOf(ownWindows.front());
    facts.monitor = monitorOf(display.get(), active != noXid ? active : own);
    if (std::ranges::find(ownWindows, handleOf(active)) == ownWindows.end())
        facts.front = factsOf(display.get(), active);
    if (facts.front)
        facts.front->otherTitles = otherTitlesOf(display.get(), facts.front->process, active);
    facts.panels = panelsOn(display.get());
    facts.menus = menusOn(display.get(), facts, active, ownWindows);
    return facts;
}

} // namespace rotika
