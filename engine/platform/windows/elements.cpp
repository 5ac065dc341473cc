#include "platform/elements.h"

#include "platform/pointer.h"

#include "platform/windows/automation.h"
#include "platform/windows/com_session.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace rotika {

namespace {

/// Parts of the class names of browser windows that show pages.
constexpr std::array<std::wstring_view, 3> pageClasses{L"Chrome_RenderWidgetHostHWND", L"MozillaWindowClass",
                                                       L"MozillaContentWindowClass"};

/// Browsers also have windows of these classes without a page; one of their sides is at most this long.
constexpr LONG maxIdleSidePx = 200;

Rect rectOf(const RECT& rect) {
    return {rect.left, rect.top, rect.right, rect.bottom};
}

Rect monitorOf(HWND window) {
    MONITORINFO info{};
    info.cbSize = sizeof(info);
    if (GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTOPRIMARY), &info) == 0) {
        return primaryMonitor();
    }
    return rectOf(info.rcMonitor);
}

bool showsPage(HWND window) {
    std::array<wchar_t, 128> buffer{};
    const int length = GetClassNameW(window, buffer.data(), static_cast<int>(buffer.size()));
    const std::wstring_view name(buffer.data(), static_cast<std::size_t>(std::max(length, 0)));
    return std::ranges::any_of(
        pageClasses, [name](std::wstring_view part) { return name.find(part) != std::wstring_view::npos; });
}

BOOL CALLBACK findBrowserChild(HWND window, LPARAM out) noexcept {
    if (!showsPage(window)) {
        return TRUE;
    }
    RECT rect{};
    GetWindowRect(window, &rect);
    if (IsWindowVisible(window) == 0 || rect.right - rect.left <= maxIdleSidePx ||
        rect.bottom - rect.top <= maxIdleSidePx) {
        return TRUE;
    }
    *reinterpret_cast<HWND*>(out) = window;
    return FALSE;
}

/// The page's element if the window shows a page, otherwise empty. Clips the area to the page's window.
AutomationElement browserPage(const Automation& automation, HWND front, Rect& area) {
    HWND page = nullptr;
    if (front != nullptr) {
        EnumChildWindows(front, findBrowserChild, reinterpret_cast<LPARAM>(&page));
    }
    if (page == nullptr) {
        return {};
    }
    AutomationElement element = automation.elementOf(page);
    RECT place{};
    GetWindowRect(page, &place);
    const RECT monitor{area.left, area.top, area.right, area.bottom};
    RECT common{};
    IntersectRect(&common, &monitor, &place);
    area = rectOf(common);
    return element;
}

AutomationElement pageRoot(const Automation& automation, HWND front, AutomationElement frontElement,
                           Rect& area) {
    AutomationElement page = browserPage(automation, front, area);
    if (!page && frontElement) {
        page = automation.firstDocument(frontElement);
    }
    return page ? std::move(page) : std::move(frontElement);
}

std::vector<AutomationElement> searchRoots(const Automation& automation, const ElementSearch& search,
                                           HWND front, Rect& area) {
    std::vector<AutomationElement> roots;
    const auto add = [&roots](AutomationElement root) {
        if (root) {
            roots.push_back(std::move(root));
        }
    };
    const bool isOurs = std::ranges::find(search.ownWindows, windowHandle(front)) != search.ownWindows.end();
    AutomationElement frontElement;
    if (front != nullptr && IsWindowVisible(front) != 0 && !isOurs) {
        frontElement = automation.elementOf(front);
    }
    if (search.scope == ElementScope::page) {
        add(pageRoot(automation, front, std::move(frontElement), area));
        return roots;
    }
    add(std::move(frontElement));
    const HWND taskbar = FindWindowW(L"Shell_TrayWnd", nullptr);
    if (taskbar != nullptr && IsWindowVisible(taskbar) != 0) {
        add(automation.elementOf(taskbar));
    }
    return roots;
}

} // namespace

// UI Automation needs no preparation.
void prepareElementSearches() {}

FoundElements findElements(const ElementSearch& search) {
    const ComSession session;
    const HWND front = GetForegroundWindow();
    const HWND first = search.ownWindows.empty() ? nullptr : nativeWindow(search.ownWindows.front());
    FoundElements found{monitorOf(front != nullptr ? front : first), {}};
    const std::optional<Automation> automation = Automation::open();
    if (!automation) {
        return found;
    }
    for (const AutomationElement& root : searchRoots(*automation, search, front, found.area)) {
        found.roots.push_back(automation->targetsBelow(root));
    }
    return found;
}

} // namespace rotika
