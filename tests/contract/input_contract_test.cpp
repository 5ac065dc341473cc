// Keys and buttons, real and injected, the capture of the real mouse, and layers.

#include "contract_test.h"
#include "platform/focus.h"
#include "platform/hot_key.h"
#include "platform/injection.h"
#include "platform/overlay_window.h"
#include "platform/pointer.h"
#include "platform/pointer_capture.h"

#include <algorithm>

using namespace rotika;

namespace {

using InputContract = ContractTest;

constexpr std::uint16_t capsLock = 0x14;
const DrawCommand opaqueRed = FilledRectangle{{0, 0, 200, 100}, {255, 200, 30, 30}};

void clickInjected(std::uint32_t button) {
    injectMouseButton(button, InputMotion::downUntilReleased);
    injectMouseButton(button, InputMotion::up);
}

TEST_F(InputContract, AHotKeyFiresOncePerPressAlsoWithCapsLockAndReachesNoOtherProgram) {
    const auto recorder = openRecorder(recorderPlace);
    ASSERT_TRUE(registerHotKey(mainWindow(), 1, 'X'));
    tapRealKey('X');
    EXPECT_TRUE(pumpUntil([] { return received.hotKeys.size() == 1; }));
    for (const std::uint16_t key : {capsLock, std::uint16_t{'X'}, capsLock})
        tapRealKey(key);
    EXPECT_TRUE(pumpUntil([] { return received.hotKeys.size() >= 2; }));
    unregisterHotKey(mainWindow(), 1);
    tapRealKey('X');
    tapInjected('C'); // arrives after all earlier events
    EXPECT_TRUE(recorder->receives("key 67 up"));
    EXPECT_EQ(received.hotKeys, (std::vector<int>{1, 1}));
    EXPECT_EQ(std::ranges::count(recorder->events(), "key 88 down"), 1);
}

TEST_F(InputContract, ACaptureReceivesOnlyTheRealMousePinsTheCursorAndReleasesBoth) {
    const auto recorder = openRecorder(recorderPlace);
    setCursorPosition(overRecorder);
    ASSERT_TRUE(pumpUntil([] { return cursorPosition() == overRecorder; }));
    playRealButton(1, true); // the last one of the X11 mouse, which XIQueryDevice does not report
    ASSERT_TRUE(recorder->receives("button 1 down"));
    beginCapture(overRecorder);
    playRealButton(1, false);
    for (const std::uint32_t button : {0U, 3U})
        clickRealButton(button);
    moveRealMouse(30, -12);
    moveRealMouse(7, 0);
    EXPECT_TRUE(pumpUntil([] { // Wine reports some motions twice
        return received.motion.x >= 37 && received.motion.y <= -12 && received.capturePresses >= 1;
    }));
    setCursorPosition({120, 140});
    EXPECT_EQ(cursorPosition(), overRecorder) << "our own moves must be skipped too";
    clickInjected(2); // arrives after all earlier events
    EXPECT_TRUE(recorder->receives("button 2 up"));
    EXPECT_EQ(recorder->events(), (Events{"button 1 down", "button 2 down", "button 2 up"}));

    endPointerCapture();
    EXPECT_TRUE(recorder->receives("button 1 up")) << "released during the capture";
    // Wine releases the X pointer with a delay, so the mouse is moved until it does.
    EXPECT_TRUE(pumpUntil([] {
        moveRealMouse(2, 1);
        return cursorPosition() != overRecorder;
    }));
    clickRealButton(0);
    EXPECT_TRUE(recorder->receives("button 0 up"));
    EXPECT_EQ(recorder->events().size(), 6U);
}

TEST_F(InputContract, TheWheelReceivesTheUsersKeysWhileItHasTheFocus) {
    constexpr std::uint16_t enter = 0x0D;
    const auto recorder = openRecorder(recorderPlace);
    setCursorPosition({200, 180}); // over the layer
    showLayer(wheelWindow(), {opaqueRed});
    tapRealKey('C');
    EXPECT_TRUE(recorder->receives("key 67 up"));
    playRealKey('D', true);
    bringToForeground(wheelWindow());
    ASSERT_TRUE(pumpUntil([] { return foregroundWindow() == wheelWindow(); }));
    EXPECT_TRUE(pumpUntil([] { return received.repeatedKeys.contains('D'); }));
    playRealKey('D', false);
    injectKey('E', false, InputMotion::downUntilReleased);
    playRealKey(enter, true);
    EXPECT_TRUE(pumpUntil([] { return received.repeatedKeys.contains(enter); }));
    EXPECT_TRUE(overlayKeyIsDown());
    playRealKey(enter, false);
    EXPECT_TRUE(pumpUntil([] { return contains(received.keys, "13 released"); }));
    EXPECT_FALSE(overlayKeyIsDown());
    EXPECT_EQ(received.keys, (Events{"68 released", "13 pressed", "13 released"}));
    EXPECT_EQ(received.focusLosses, 0);
    hideOverlayWindow(wheelWindow());
    bringToForeground(recorder->window());
    EXPECT_TRUE(pumpUntil([] { return received.focusLosses == 1; }));
    injectKey('E', false, InputMotion::up);
    tapRealKey('F');
    EXPECT_TRUE(recorder->receives("key 70 up"));
    EXPECT_FALSE(contains(recorder->events(), "key 69 down") || contains(received.keys, "70 pressed"));
}

/// Repeats the click: until the window system has applied a change, clicks may hit the earlier window.
bool clicksUntil(const std::function<bool()>& hasEffect) {
    return pumpUntil([&] { return clickInjected(0), hasEffect(); });
}

TEST_F(InputContract, TheWheelReceivesAnInjectedPressAndTheGridIsClickThrough) {
    const auto recorder = openRecorder(recorderPlace);
    setCursorPosition({200, 180});
    showLayer(gridWindow(), {opaqueRed});
    EXPECT_TRUE(clicksUntil([&] { return contains(recorder->events(), "button 0 up"); }));
    EXPECT_EQ(received.windowPresses, 0);
    showLayer(wheelWindow(), {opaqueRed});
    EXPECT_TRUE(clicksUntil([] { return received.windowPresses > 0; }));
    EXPECT_EQ(foregroundWindow(), recorder->window()) << "a click on the wheel gives it no focus";
    hideOverlayWindow(wheelWindow());
    const std::size_t before = recorder->events().size();
    EXPECT_TRUE(clicksUntil([&] { return recorder->events().size() > before; }));
}

} // namespace
