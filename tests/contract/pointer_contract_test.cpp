// The cursor, the monitors and the capture of the real mouse.

#include "contract_test.h"
#include "platform/injection.h"
#include "platform/pointer.h"
#include "platform/pointer_capture.h"

#include <gtest/gtest.h>

namespace {

using PointerContract = ContractTest;

constexpr Point overRecorder{300, 250};

/// The recorder has seen an injected right click: whatever came before it has arrived too, or never will.
bool seesInjectedClick(const Recorder& recorder) {
    injectMouseButton(1, InputMotion::downUntilReleased);
    injectMouseButton(1, InputMotion::up);
    return pumpUntil([&] { return contains(recorder.events(), "button 1 up"); });
}

TEST_F(PointerContract, TheCursorGoesWhereItIsPut) {
    for (const Point place : {Point{120, 140}, Point{0, 0}, Point{431, 7}}) {
        setCursorPosition(place);
        EXPECT_TRUE(pumpUntil([&] { return cursorPosition() == place; }))
            << testing::PrintToString(cursorPosition());
    }
}

TEST_F(PointerContract, EveryPointHasAMonitor) {
    const Rect primary = primaryMonitor();
    EXPECT_EQ(primary.left, 0);
    EXPECT_EQ(primary.top, 0);
    EXPECT_GE(primary.width(), 640);
    EXPECT_GE(primary.height(), 480);
    EXPECT_EQ(monitorAt({0, 0}), primary);
    EXPECT_EQ(monitorAt({primary.right - 1, primary.bottom - 1}), primary);
    EXPECT_EQ(monitorAt({-50'000, 90'000}), primary) << "a point outside belongs to the primary monitor";
}

TEST_F(PointerContract, ARealPressIsSwallowedAndAnInjectedOneIsNot) {
    const auto recorder = openRecorder(recorderPlace);
    beginCapture(overRecorder);
    pressRealButton(0);
    releaseRealButton(0);
    pressRealButton(2);
    releaseRealButton(2);
    scrollRealWheel();
    EXPECT_TRUE(pumpUntil([] { return heard.capturePresses >= 1; }));
    EXPECT_TRUE(seesInjectedClick(*recorder));
    EXPECT_EQ(recorder->events(), (std::vector<std::string>{"button 1 down", "button 1 up"}));
    EXPECT_GE(heard.capturePresses, 1);
    EXPECT_LE(heard.capturePresses, 2);
}

TEST_F(PointerContract, EachCaptureHearsRealMotionRawWhileTheCursorStays) {
    const auto recorder = openRecorder(recorderPlace);
    for (int round = 0; round < 5; ++round) {
        heard = {};
        beginCapture(overRecorder);
        moveRealMouse(30, -12);
        moveRealMouse(7, 0);
        EXPECT_TRUE(pumpUntil([] {
            return heard.motion == (Point{37, -12});
        })) << round
            << ": " << testing::PrintToString(heard.motion);
        EXPECT_EQ(cursorPosition(), overRecorder);
        endPointerCapture();
    }
    EXPECT_EQ(heard.capturePresses, 0);
    EXPECT_TRUE(recorder->events().empty());
}

TEST_F(PointerContract, TheCaptureHoldsTheCursorBackFromOurMovesUntilItsEnd) {
    beginCapture(overRecorder);
    setCursorPosition({120, 140});
    EXPECT_EQ(cursorPosition(), overRecorder);
    endPointerCapture();
    EXPECT_TRUE(pumpUntil([] {
        setCursorPosition({120, 140});
        return cursorPosition() == (Point{120, 140});
    }));
}

TEST_F(PointerContract, TheEndGivesTheRealMouseBack) {
    const auto recorder = openRecorder(recorderPlace);
    beginCapture(overRecorder);
    pressRealButton(0);
    releaseRealButton(0);
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
    pressRealButton(0);
    releaseRealButton(0);
    EXPECT_TRUE(pumpUntil([&] { return recorder->events().size() >= 2; }));
    EXPECT_EQ(recorder->events(), (std::vector<std::string>{"button 0 down", "button 0 up"}));
    EXPECT_EQ(heard.capturePresses, before);
}

TEST_F(PointerContract, AButtonLetGoDuringTheCaptureIsLetGoForThePrograms) {
    const auto recorder = openRecorder(recorderPlace);
    setCursorPosition(overRecorder);
    ASSERT_TRUE(pumpUntil([] { return cursorPosition() == overRecorder; }));
    pressRealButton(2);
    ASSERT_TRUE(pumpUntil([&] { return contains(recorder->events(), "button 2 down"); }));
    beginCapture(overRecorder);
    releaseRealButton(2);
    moveRealMouse(1, 0); // when it has arrived, so has the release
    EXPECT_TRUE(pumpUntil([] { return heard.motion.x >= 1; }));
    EXPECT_TRUE(seesInjectedClick(*recorder));
    EXPECT_FALSE(contains(recorder->events(), "button 2 up"));
    endPointerCapture();
    EXPECT_TRUE(pumpUntil([&] { return contains(recorder->events(), "button 2 up"); }));
}

} // namespace
