#include "wheel/focus_hold.h"

#include "base/picture.h"
#include "model/engine_config.h"
#include "model/engine_state.h"
#include "platform/clock.h"
#include "platform/focus.h"
#include "platform/overlay_window.h"
#include "platform/timer.h"
#include "run/function_run.h"

#include <utility>

namespace rotika {

namespace {

constexpr std::uint32_t pollPeriodMs = 15;
constexpr std::uint64_t longestHoldMs = 1000; // the key may be stuck

bool hasFocus() {
    return foregroundWindow() == engineState.wheelWindow;
}

void endWhenReleased() noexcept {
    if (!overlayKeyIsDown() || !hasFocus() || tickCount() - engineState.focusHoldStart >= longestHoldMs)
        endFocusHold();
}

void concealWheel() {
    const Rect place = overlayWindowRect(engineState.wheelWindow);
    presentPictureAt(engineState.wheelWindow, {place.left, place.top},
                     {.width = 1, .height = 1, .commands = {}});
}

} // namespace

bool startFocusHold() {
    if (!engineConfig.takeFocus || !overlayKeyIsDown() || !hasFocus())
        return false;
    concealWheel();
    engineState.holdsFocus = true;
    engineState.focusHoldStart = tickCount();
    startWindowTimer(engineState.wheelWindow, pollPeriodMs, endWhenReleased);
    return true;
}

void endFocusHold() noexcept {
    if (!std::exchange(engineState.holdsFocus, false))
        return;
    const bool hadFocus = hasFocus();
    stopWindowTimer(engineState.wheelWindow);
    hideOverlayWindow(engineState.wheelWindow);
    if (hadFocus)
        giveFocusBack();
    const auto waiting = std::exchange(engineState.functionsAfterHold, {});
    if (engineState.sessionLocked || engineState.isStopped)
        return;
    for (const auto& [action, initialDelay] : waiting)
        runFunction(action, initialDelay);
}

void giveFocusBack() {
    const WindowHandle saved = engineState.savedForeground;
    if (saved == nullptr || !windowExists(saved) || foregroundWindow() == saved)
        return;
    bringToForeground(saved);
}

void runWithFocusBack(const WheelAction& action, std::uint32_t initialDelay) {
    if (engineState.holdsFocus)
        engineState.functionsAfterHold.emplace_back(action, initialDelay);
    else
        runFunction(action, initialDelay);
}

} // namespace rotika
