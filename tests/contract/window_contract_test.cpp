// Layers and the focus.

#include "contract_test.h"
#include "platform/focus.h"
#include "platform/injection.h"
#include "platform/overlay_window.h"
#include "platform/pointer.h"

#include <gtest/gtest.h>

namespace {

using WindowContract = ContractTest;

constexpr Point overLayer{200, 180};
constexpr Rect layerPlace{150, 150, 350, 250};
constexpr PictureColor opaqueRed{255, 200, 30, 30};

void showLayer(WindowHandle layer) {
    placeOverlayWindow(layer, layerPlace);
    presentPicture(layer, plainPicture(layerPlace.width(), layerPlace.height(), opaqueRed));
    showOverlayWindow(layer);
}

/// Until what was asked of the window system has surely happened, clicks may land on what was there before.
bool clicksUntil(const std::function<bool()>& landed) {
    return pumpUntil([&] {
        injectMouseButton(0, InputMotion::downUntilReleased);
        injectMouseButton(0, InputMotion::up);
        return landed();
    });
}

TEST_F(WindowContract, ALayerLiesWhereItIsPlaced) {
    for (const Rect& place : {layerPlace, Rect{0, 0, 588, 460}, Rect{-40, 20, 160, 120}}) {
        placeOverlayWindow(wheelWindow(), place);
        EXPECT_EQ(overlayWindowRect(wheelWindow()), place);
        presentPicture(wheelWindow(), plainPicture(place.width(), place.height(), opaqueRed));
        showOverlayWindow(wheelWindow());
        EXPECT_EQ(overlayWindowRect(wheelWindow()), place);
        hideOverlayWindow(wheelWindow());
        EXPECT_EQ(overlayWindowRect(wheelWindow()), place);
    }
}

TEST_F(WindowContract, TheWheelStopsAPressAndTheGridLetsItThrough) {
    const auto recorder = openRecorder(recorderPlace);
    setCursorPosition(overLayer);
    showLayer(gridWindow());
    EXPECT_TRUE(clicksUntil([&] { return contains(recorder->events(), "button 0 up"); }));
    EXPECT_EQ(heard.windowPresses, 0);

    showLayer(wheelWindow());
    EXPECT_TRUE(clicksUntil([] { return heard.windowPresses > 0; }));
    EXPECT_EQ(foregroundWindow(), recorder->window()) << "a click on the wheel gives it no focus";

    hideOverlayWindow(wheelWindow());
    const std::size_t before = recorder->events().size();
    EXPECT_TRUE(clicksUntil([&] { return recorder->events().size() > before; }));
}

TEST_F(WindowContract, TheFocusGoesWhereItIsGiven) {
    const auto first = openRecorder(recorderPlace);
    const auto second = openRecorder({550, 100, 750, 300});
    EXPECT_TRUE(pumpUntil([&] { return foregroundWindow() == second->window(); }));
    EXPECT_TRUE(windowExists(first->window()));
    bringToForeground(first->window());
    EXPECT_TRUE(pumpUntil([&] { return foregroundWindow() == first->window(); }));
    injectKey(0x41, false, InputMotion::downUntilReleased);
    injectKey(0x41, false, InputMotion::up);
    EXPECT_TRUE(pumpUntil([&] { return contains(first->events(), "key 65 up"); }));
}

TEST_F(WindowContract, AClosedWindowExistsNoMore) {
    auto recorder = openRecorder(recorderPlace);
    const WindowHandle window = recorder->window();
    EXPECT_TRUE(windowExists(window));
    recorder.reset();
    EXPECT_TRUE(pumpUntil([&] { return !windowExists(window); }));
    EXPECT_FALSE(windowExists(nullptr));
}

} // namespace
