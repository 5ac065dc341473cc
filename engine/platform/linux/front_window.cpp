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
    constexpr long maxWords = 4096;
    PropertyValue value;
    Atom type = 0;
    unsigned long unreadBytes = 0;
    unsigned char* data = nullptr;
    const int failure =
        XGetWindowProperty(display, window, XInternAtom(display, name, 0), 0, maxWords, 0, AnyPropertyType,
                           &type, &value.format, &value.count, &unreadBytes, &data);
    value.data.reset(data);
    if (failure != 0 || data == nullptr)
        value.count = 0;
    return value;
}

/// A property of 32-bit values: windows, atoms or numbers.
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

/// 0 if the window has no such property.
pid_t processOf(Display* display, Window window) {
    const std::vector<unsigned long> process = numbersOf(display, window, "_NET_WM_PID");
    return process.empty() ? 0 : static_cast<pid_t>(process.front());
}

struct WindowPlace {
    Rect place;
    bool isVisible = false;
    bool isUnmanaged = false; // override-redirect, as menus and tool tips are
};

/// Nullopt for a window that no longer exists.
std::optional<WindowPlace> placeOf(Display* display, Window window) {
    XWindowAttributes attributes;
    Window child = noXid;
    int x = 0;
    int y = 0;
    if (window == noXid || XGetWindowAttributes(display, window, &attributes) == 0 ||
        XTranslateCoordinates(display, window, DefaultRootWindow(display), 0, 0, &x, &y, &child) == 0)
        return std::nullopt;
    return WindowPlace{{x, y, x + attributes.width, y + attributes.height},
                       attributes.map_state == IsViewable && attributes.c_class == InputOutput,
                       attributes.override_redirect != 0};
}

/// Nullopt for a window that no longer exists or is not visible.
std::optional<WindowFacts> factsOf(Display* display, Window window) {
    const std::optional<WindowPlace> placed = placeOf(display, window);
    if (!placed || !placed->isVisible)
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

bool isMenu(Display* display, Window window, const WindowPlace& placed) {
    constexpr std::int32_t minSidePx = 8;
    if (!placed.isVisible || !placed.isUnmanaged || placed.place.width() < minSidePx ||
        placed.place.height() < minSidePx || placed.place.right <= 0 || placed.place.bottom <= 0)
        return false;
    // Not every toolkit marks a menu as one: exclude the other types.
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
    const auto isOfShownProgram = [&facts](const WindowFacts& menu) {
        const auto hasSameProcess = [&menu](const WindowFacts& other) {
            return other.process == menu.process;
        };
        return menu.process != 0 && ((facts.front && hasSameProcess(*facts.front)) ||
                                     std::ranges::any_of(facts.panels, hasSameProcess));
    };
    Window root = noXid;
    Window parent = noXid;
    Window* windows = nullptr;
    unsigned count = 0;
    std::vector<WindowFacts> menus;
    if (XQueryTree(display, DefaultRootWindow(display), &root, &parent, &windows, &count) == 0)
        return menus;
    const XOwned<Window> owned(windows);
    for (unsigned i = count; i-- > 0;) { // the topmost is last
        const std::optional<WindowPlace> placed = placeOf(display, windows[i]);
        if (!placed || windows[i] == active || !isMenu(display, windows[i], *placed) ||
            std::ranges::find(ownWindows, handleOf(windows[i])) != ownWindows.end())
            continue;
        const auto menu = factsOf(display, windows[i]);
        if (menu && isOfShownProgram(*menu))
            menus.push_back(*menu);
    }
    return menus;
}

/// The monitor that contains the centre of the window, or the primary one.
Rect monitorOf(Display* display, Window window) {
    const std::optional<WindowPlace> placed = placeOf(display, window);
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

ScreenFacts readScreen(const std::vector<WindowHandle>& ownWindows) {
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
