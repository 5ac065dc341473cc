#include "wheel/capture.h"

#include "model/engine_config.h"
#include "model/engine_state.h"
#include "model/private_messages.h"
#include "platform/focus.h"
#include "platform/overlay_window.h"
#include "platform/pointer.h"
#include "platform/pointer_capture.h"
#include "platform/timer.h"
#include "wheel/focus_hold.h"
#include "wheel/painter.h"
#include "wheel/tick.h"
#include "wheel/wheel_layout.h"

namespace rotika {

namespace {

void resetVirtualCursor() {
    engineState.hoveredField = -1;
    engineState.hoveredArrow = -1;
    engineState.heldKey = 0;
    engineState.dwellTarget = -1;
    engineState.lastMouseMoveTick = 0;
    engineState.gazeDriven = false;
    engineState.dwellProgress = 0;
    engineState.pendingDx = 0;
    engineState.pendingDy = 0;
    engineState.cursorX = wheelCentre.x;
    engineState.cursorY = wheelCentre.y;
}

PointerCaptureHandlers captureHandlers() {
    return {
        .isSwallowing = []() noexcept { return engineState.wheelVisible.load(); },
        .leftPressed = []() noexcept { postWindowMessage(engineState.wheelWindow, MsgSelectUnderCursor); },
        .moved = addRawMotion,
    };
}

void tickOpenWheel() noexcept {
    if (!engineState.wheelVisible)
        return;
    if (renewPointerCapture()) {
        tickWheel();
    } else {
        closeWheel();
        endFocusHold(); // after an interruption of this thread, at once
    }
}

void endShow() {
    stopWindowTimer(engineState.wheelWindow);
    endPointerCapture();
    engineState.wheelVisible = false;
    engineState.hoveredField = -1;
    engineState.gazeDriven = false;
    engineState.dwellTarget = -1;
    engineState.dwellProgress = 0;
}

} // namespace

void prepareWheel() {
    if (engineState.wheelWindow == nullptr || engineState.wheelVisible)
        return;
    resetVirtualCursor();
    paintWheel();
}

void showWheel() {
    if (engineState.sessionLocked || engineState.isStopped || engineState.wheelWindow == nullptr)
        return;
    endFocusHold();
    engineState.savedCursor = cursorPosition();
    engineState.savedForeground = foregroundWindow();
    engineState.restorePending = true;
    placeOverlayWindow(engineState.wheelWindow, wheelRectOn(monitorAt(engineState.savedCursor)));
    resetVirtualCursor();
    paintWheel(); // before it is shown, so that no old frame is visible
    showOverlayWindow(engineState.wheelWindow);
    engineState.wheelVisible = true;
    if (engineConfig.takeFocus && engineState.savedForeground != nullptr)
        bringToForeground(engineState.wheelWindow);
    beginPointerCapture(engineState.wheelWindow, engineState.savedCursor, captureHandlers());
    startWindowTimer(engineState.wheelWindow, wheelTickPeriodMs, tickOpenWheel);
}

void hideWheel() {
    endShow();
    hideOverlayWindow(engineState.wheelWindow);
}

void restoreFocus() {
    if (!engineState.restorePending)
        return;
    engineState.restorePending = false;
    setCursorPosition(engineState.savedCursor);
    if (!engineState.holdsFocus)
        giveFocusBack();
}

void closeWheel() {
    if (!engineState.wheelVisible)
        return;
    endShow();
    if (!startFocusHold())
        hideOverlayWindow(engineState.wheelWindow);
    restoreFocus();
}

void toggleWheel() {
    if (engineState.wheelVisible)
        closeWheel();
    else
        showWheel();
}

} // namespace rotika
