// Keys and buttons, real and injected, the capture of the real mouse, layers and the focus.

#include "contract_test.h"
#include "platform/focus.h"
#include "platform/hot_key.h"
#include "platform/injection.h"
#include "platform/keyboard_layout.h"
#include "platform/overlay_window.h"
#include "platform/pointer.h"
#include "platform/pointer_capture.h"

namespace {

using InputContract = ContractTest;
using Events = std::vector<std::string>;

constexpr std::uint16_t capsLock = 0x14, keyRight = 0x27;
const DrawCommand opaqueRed = FilledRectangle{{0, 0, 200, 100}, {255, 200, 30, 30}};

/// Whatever came before the injected right click that it sees has arrived too, or never will.
Events eventsUntilClick(Recorder& recorder) {
    clickInjected(1);
    EXPECT_TRUE(recorder.hears("button 1 up"));
    Events events = recorder.events();
    std::erase_if(events, [](const std::string& event) { return event.starts_with("button 1"); });
    return events;
}

TEST_F(InputContract, AHotKeyIsHeardOncePerPressAlsoUnderALitCapsLockAndByNobodyElse) {
    const auto recorder = openRecorder(recorderPlace);
    auto taken = takeHotKeyElsewhere('X');
    EXPECT_FALSE(registerHotKey(mainWindow(), 1, 'X'));
    EXPECT_TRUE(registerHotKey(mainWindow(), 1, 'B')) << "another key is free";
    unregisterHotKey(mainWindow(), 1);
    taken.reset();
    ASSERT_TRUE(pumpUntil([] { return registerHotKey(mainWindow(), 1, 'X'); }));

    tapRealKey('X');
    EXPECT_TRUE(pumpUntil([] { return heard.hotKeys.size() == 1; }));
    for (const std::uint16_t key : {capsLock, std::uint16_t{'X'}, capsLock})
        tapRealKey(key);
    EXPECT_TRUE(pumpUntil([] { return heard.hotKeys.size() >= 2; }));
    tapInjected('B');
    EXPECT_TRUE(recorder->hears("key 66 up"));
    EXPECT_FALSE(contains(recorder->events(), "key 88 down"));

    unregisterHotKey(mainWindow(), 1);
    tapRealKey('X');
    tapInjected('C');
    EXPECT_TRUE(recorder->hears("key 67 up"));
    EXPECT_EQ(heard.hotKeys, (std::vector<int>{1, 1}));
}

TEST_F(InputContract, InjectedKeysReachTheWindowWithTheKeyboardAndOneLeftDownStaysDown) {
    const auto recorder = openRecorder(recorderPlace);
    tapInjected('1');
    tapInjected(keyRight, true);
    injectKey('A', false, InputMotion::downAndLeft);
    tapInjected('B');
    injectKey('A', false, InputMotion::up);
    EXPECT_TRUE(recorder->hears("key 65 up"));
    EXPECT_EQ(recorder->events(), (Events{"key 49 down", "key 49 up", "key 39 down", "key 39 up",
                                          "key 65 down", "key 66 down", "key 66 up", "key 65 up"}));
}

TEST_F(InputContract, CharactersHaveTheirKeyAndShiftState) {
    const std::u16string characters = u"aA7! .\u4E2D";
    const std::vector<int> keys{'A', 0x100 + 'A', '7', 0x100 + '1', 0x20, 0xBE, noVirtualKey};
    for (std::size_t i = 0; i < keys.size(); ++i)
        EXPECT_EQ(virtualKeyOfCharacter(characters[i]), keys[i]) << i;
}

TEST_F(InputContract, TheCursorGoesWhereItIsPutAndEveryPointHasAMonitor) {
    for (const Point place : {Point{120, 140}, Point{0, 0}, Point{431, 7}}) {
        setCursorPosition(place);
        EXPECT_TRUE(pumpUntil([&] { return cursorPosition() == place; })) << place.x;
    }
    const Rect primary = primaryMonitor();
    EXPECT_TRUE(primary.contains({0, 0}) && primary.contains({639, 479}) && !primary.contains({-1, 0}));
    for (const Point point :
         {Point{0, 0}, Point{primary.right - 1, primary.bottom - 1}, Point{-50'000, 90'000}})
        EXPECT_EQ(monitorAt(point), primary) << point.x << ": one outside belongs to the primary monitor";
}

TEST_F(InputContract, ACaptureHearsTheRealMouseAloneAndHoldsTheCursor) {
    const auto recorder = openRecorder(recorderPlace);
    for (int round = 0; round < 5; ++round) {
        heard = {};
        beginCapture(overRecorder);
        moveRealMouse(30, -12);
        moveRealMouse(7, 0);
        EXPECT_TRUE(pumpUntil([] { return heard.motion == Point{37, -12}; })) << round;
        setCursorPosition({120, 140});
        EXPECT_EQ(cursorPosition(), overRecorder) << "held back from our own moves as well";
        endPointerCapture();
    }
    EXPECT_EQ(heard.capturePresses, 0);
    beginCapture(overRecorder);
    for (const std::uint32_t button : {0U, 2U, 3U})
        clickRealButton(button);
    EXPECT_TRUE(pumpUntil([] { return heard.capturePresses >= 1; }));
    EXPECT_EQ(eventsUntilClick(*recorder), Events{});
    EXPECT_LE(heard.capturePresses, 2);
}

TEST_F(InputContract, TheEndGivesTheRealMouseBack) {
    const auto recorder = openRecorder(recorderPlace);
    beginCapture(overRecorder);
    clickRealButton(0);
    moveRealMouse(1, 0); // when it has arrived, so has the release
    ASSERT_TRUE(pumpUntil([] { return heard.capturePresses >= 1 && heard.motion.x >= 1; }));
    endPointerCapture();
    endPointerCapture(); // harmless
    const int before = heard.capturePresses;
    // Wine lets go of the X pointer a moment later, so the mouse is moved until it does.
    EXPECT_TRUE(pumpUntil([] {
        moveRealMouse(2, 1);
        return cursorPosition() != overRecorder;
    }));
    clickRealButton(0);
    EXPECT_TRUE(recorder->hears("button 0 up"));
    EXPECT_EQ(recorder->events(), (Events{"button 0 down", "button 0 up"}));
    EXPECT_EQ(heard.capturePresses, before);
}

TEST_F(InputContract, AButtonLetGoDuringTheCaptureIsLetGoForThePrograms) {
    const auto recorder = openRecorder(recorderPlace);
    setCursorPosition(overRecorder);
    ASSERT_TRUE(pumpUntil([] { return cursorPosition() == overRecorder; }));
    playRealButton(2, true);
    ASSERT_TRUE(recorder->hears("button 2 down"));
    beginCapture(overRecorder);
    playRealButton(2, false);
    moveRealMouse(1, 0); // when it has arrived, so has the release
    EXPECT_TRUE(pumpUntil([] { return heard.motion.x >= 1; }));
    EXPECT_EQ(eventsUntilClick(*recorder), Events{"button 2 down"});
    endPointerCapture();
    EXPECT_TRUE(recorder->hears("button 2 up"));
}

/// Until what was asked of the window system has surely happened, clicks may land on what was there before.
bool clicksUntil(const std::function<bool()>& landed) {
    return pumpUntil([&] { return clickInjected(0), landed(); });
}

TEST_F(InputContract, TheWheelStopsAPressAndTheGridLetsItThrough) {
    const auto recorder = openRecorder(recorderPlace);
    setCursorPosition({200, 180});
    showLayer(gridWindow(), {opaqueRed});
    EXPECT_EQ(overlayWindowRect(gridWindow()), layerPlace);
    EXPECT_TRUE(clicksUntil([&] { return contains(recorder->events(), "button 0 up"); }));
    EXPECT_EQ(heard.windowPresses, 0);
    showLayer(wheelWindow(), {opaqueRed});
    EXPECT_TRUE(clicksUntil([] { return heard.windowPresses > 0; }));
    EXPECT_EQ(foregroundWindow(), recorder->window()) << "a click on the wheel gives it no focus";
    hideOverlayWindow(wheelWindow());
    const std::size_t before = recorder->events().size();
    EXPECT_TRUE(clicksUntil([&] { return recorder->events().size() > before; }));
}

TEST_F(InputContract, TheFocusGoesWhereItIsGivenAndAClosedWindowIsNoMore) {
    const auto first = openRecorder(recorderPlace);
    auto second = openRecorder({550, 100, 750, 300});
    EXPECT_EQ(foregroundWindow(), second->window());
    bringToForeground(first->window());
    EXPECT_TRUE(pumpUntil([&] { return foregroundWindow() == first->window(); }));
    tapInjected('A');
    EXPECT_TRUE(first->hears("key 65 up"));
    const WindowHandle dead = second->window();
    EXPECT_TRUE(windowExists(dead));
    second.reset();
    EXPECT_TRUE(pumpUntil([&] { return !windowExists(dead); }));
    EXPECT_FALSE(windowExists(nullptr));
}

} // namespace
