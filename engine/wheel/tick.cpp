#include "wheel/tick.h"

#include "model/engine_config.h"
#include "model/engine_state.h"
#include "model/private_messages.h"
#include "model/status_codes.h"
#include "platform/clock.h"
#include "platform/overlay_window.h"
#include "platform/pointer.h"
#include "wheel/painter.h"
#include "wheel/wheel_layout.h"

#include <algorithm>

namespace rotika {

namespace {

constexpr std::uint64_t gazeFreshMs = 250; // older samples are ignored
constexpr std::uint64_t mouseIdleMs = 700; // the gaze takes over only after this time without motion
constexpr std::int32_t arrowTargetBase = 100;

bool gazeMayPull(std::uint64_t now) {
    // A sample may be newer than `now`: the gaze thread runs concurrently.
    const std::uint64_t sampled = std::min(engineState.gazeSampleTick.load(), now);
    return engineConfig.gazeEnabled && engineState.gazeStatus == gazeStatusActive &&
           now - sampled < gazeFreshMs && now - engineState.lastMouseMoveTick > mouseIdleMs;
}

/// 35 percent of the way from `cursor` to the gaze; below 3 pixels the step truncates to nothing.
std::int32_t pulled(std::int32_t cursor, std::int32_t gaze, std::int32_t screenStart, std::int32_t screenSize,
                    std::int32_t windowStart) {
    const float target = static_cast<float>(screenSize) * (static_cast<float>(gaze) / 10000.0F) +
                         static_cast<float>(screenStart) - static_cast<float>(windowStart);
    const float error = target - static_cast<float>(cursor);
    return cursor - static_cast<std::int32_t>(error * -0.35F);
}

bool pullTowardGaze() {
    const Rect window = overlayWindowRect(engineState.wheelWindow);
    const Rect screen = primaryMonitor();
    const std::int32_t x =
        pulled(engineState.cursorX, engineState.gazeX, screen.left, screen.width(), window.left);
    const std::int32_t y =
        pulled(engineState.cursorY, engineState.gazeY, screen.top, screen.height(), window.top);
    const bool hasMoved = x != engineState.cursorX || y != engineState.cursorY;
    engineState.cursorX = x;
    engineState.cursorY = y;
    engineState.gazeDriven = true;
    return hasMoved;
}

bool applyMotion(std::uint64_t now) {
    if (engineState.pendingDx != 0 || engineState.pendingDy != 0) {
        engineState.cursorX += engineState.pendingDx;
        engineState.cursorY += engineState.pendingDy;
        engineState.pendingDx = 0;
        engineState.pendingDy = 0;
        noteRealMotion();
        return true;
    }
    // Stale gaze samples do not end a dwell in progress; only mouse motion ends gaze control.
    return gazeMayPull(now) && pullTowardGaze();
}

void clampCursor() {
    engineState.cursorX = std::clamp(engineState.cursorX, 0, layerWidthPx - 1);
    engineState.cursorY = std::clamp(engineState.cursorY, 0, layerHeightPx - 1);
}

bool updateHover() {
    const std::int32_t field = hitTestField(engineState.cursorX, engineState.cursorY);
    const std::int32_t arrow = hitTestArrow(engineState.cursorX, engineState.cursorY);
    if (field == engineState.hoveredField && arrow == engineState.hoveredArrow)
        return false;
    engineState.hoveredField = field;
    engineState.hoveredArrow = arrow;
    return true;
}

std::int32_t dwellTargetUnderCursor() {
    if (engineState.hoveredField >= 0)
        return engineState.hoveredField;
    return engineState.hoveredArrow >= 0 ? arrowTargetBase + engineState.hoveredArrow : -1;
}

/// Updates the dwell on `target`; true when it is complete.
bool advanceDwell(std::int32_t target, std::uint64_t now) {
    if (target != engineState.dwellTarget) {
        engineState.dwellTarget = target;
        engineState.dwellStartTick = now;
    }
    engineState.dwellProgress =
        static_cast<float>(now - engineState.dwellStartTick) / static_cast<float>(engineConfig.gazeDwell);
    return engineState.dwellProgress >= 1.0F;
}

void clearDwell() {
    engineState.dwellTarget = -1;
    engineState.dwellProgress = 0;
}

/// Untrusted input: saturate.
std::int32_t saturatedSum(std::int32_t a, std::int32_t b) {
    constexpr std::int64_t limit = 1'000'000; // far beyond the layer, far below overflow
    return static_cast<std::int32_t>(std::clamp(std::int64_t{a} + b, -limit, limit));
}

} // namespace

void noteRealMotion() noexcept {
    engineState.lastMouseMoveTick = tickCount();
    engineState.gazeDriven = false; // the next tick ends the dwell
}

void addRawMotion(std::int32_t dx, std::int32_t dy) noexcept {
    if (!engineState.wheelVisible)
        return;
    engineState.pendingDx = saturatedSum(engineState.pendingDx, dx);
    engineState.pendingDy = saturatedSum(engineState.pendingDy, dy);
}

void tickWheel() noexcept {
    const std::uint64_t now = tickCount();
    bool hasChanged = applyMotion(now);
    clampCursor();
    hasChanged |= updateHover();
    const std::int32_t target = dwellTargetUnderCursor();
    const float oldProgress = engineState.dwellProgress;
    if (engineState.gazeDriven && engineConfig.gazeDwell >= 1 && target >= 0) {
        if (advanceDwell(target, now)) {
            clearDwell();
            postWindowMessage(engineState.wheelWindow, MsgSelectUnderCursor);
            return;
        }
    } else {
        clearDwell();
    }
    if (hasChanged || engineState.dwellProgress != oldProgress)
        paintWheel();
}

} // namespace rotika
