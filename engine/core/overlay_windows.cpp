#include "core/overlay_windows.h"

#include "layers/grid_window.h"
#include "model/engine_state.h"
#include "model/private_messages.h"
#include "platform/messages.h"
#include "platform/overlay_window.h"
#include "wheel/capture.h"
#include "wheel/focus_hold.h"
#include "wheel/selection.h"
#include "wheel/wheel_keys.h"
#include "wheel/wheel_layout.h"

namespace rotika {

namespace {

constexpr std::int32_t gridWindowSizePx = 100; // until the grid is first placed

/// The capture must end with its window.
void onWheelWindowDestroyed() noexcept {
    closeWheel();
    endFocusHold();
    engineState.wheelWindow = nullptr;
    createMissingOverlays();
}

void onGridWindowDestroyed() noexcept {
    clearGridWindowFlags();
    engineState.gridWindow = nullptr;
    createMissingOverlays();
}

void onWheelMessage(std::uint32_t message, std::uintptr_t, std::intptr_t) noexcept {
    if (message == MsgSelectUnderCursor)
        selectUnderCursor();
}

OverlayWindowHandlers wheelWindowHandlers() {
    return {
        .messageArrived = onWheelMessage,
        .leftPressed = []() noexcept { postWindowMessage(engineState.wheelWindow, MsgSelectUnderCursor); },
        .keyChanged = handleWheelKey,
        .focusLost = forgetHeldWheelKey,
        .closeRequested = []() noexcept { closeWheel(); },
        .destroyed = onWheelWindowDestroyed,
    };
}

OverlayWindowHandlers gridWindowHandlers() {
    return {.destroyed = onGridWindowDestroyed};
}

} // namespace

void createMissingOverlays() {
    if (engineState.wheelWindow == nullptr)
        engineState.wheelWindow =
            createOverlayWindow(OverlayKind::wheel, layerWidthPx, layerHeightPx, wheelWindowHandlers());
    if (engineState.gridWindow == nullptr)
        engineState.gridWindow =
            createOverlayWindow(OverlayKind::grid, gridWindowSizePx, gridWindowSizePx, gridWindowHandlers());
}

} // namespace rotika
