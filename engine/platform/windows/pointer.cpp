#include "platform/pointer.h"

#include "platform/windows/windows_api.h"

namespace rotika {

Point cursorPosition() {
    POINT position{};
    GetCursorPos(&position);
    return {position.x, position.y};
}

void setCursorPosition(Point position) {
    SetCursorPos(position.x, position.y);
}

Rect monitorAt(Point point) {
    const HMONITOR monitor = MonitorFromPoint({point.x, point.y}, MONITOR_DEFAULTTOPRIMARY);
    MONITORINFO info{};
    info.cbSize = sizeof(info);
    if (GetMonitorInfoW(monitor, &info) == 0) {
        return primaryMonitor();
    }
    return {info.rcMonitor.left, info.rcMonitor.top, info.rcMonitor.right, info.rcMonitor.bottom};
}

Rect primaryMonitor() {
    return {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
}

bool mouseButtonsAreSwapped() {
    return GetSystemMetrics(SM_SWAPBUTTON) != 0;
}

} // namespace rotika
