#include "platform/pointer_capture.h"

#include "platform/simulated/simulated_desktop.h"

#include <utility>

namespace rotika {

void beginPointerCapture(WindowHandle wheelWindow, Point pinned, const PointerCaptureHandlers& handlers) {
    SimulatedDesktop& desktop = simulatedDesktop();
    desktop.requireWindow(wheelWindow, "capture without a window");
    if (desktop.capture)
        breakContract("nested pointer capture");
    desktop.capture = handlers;
    desktop.pinnedAt = {pinned.x, pinned.y, pinned.x + 1, pinned.y + 1};
    desktop.note(JournalKind::capture,
                 "capture at " + std::to_string(pinned.x) + "," + std::to_string(pinned.y));
}

bool renewPointerCapture() {
    SimulatedDesktop& desktop = simulatedDesktop();
    desktop.requireOwner("capture renewed by a worker");
    return !std::exchange(desktop.captureWasSilent, false);
}

void endPointerCapture() {
    SimulatedDesktop& desktop = simulatedDesktop();
    desktop.requireOwner("capture ended by a worker");
    if (desktop.capture) {
        desktop.capture.reset();
        desktop.pinnedAt.reset();
        desktop.note(JournalKind::capture, "capture ended");
    }
}

} // namespace rotika
