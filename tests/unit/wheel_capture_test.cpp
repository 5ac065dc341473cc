#include "engine_test.h"
#include "platform/injection.h"
#include "wheel/capture.h"

#include <functional>

namespace {

class WheelCapture : public EngineTest {
protected:
    std::string everything() {
        const std::string text = journal({JournalKind::window, JournalKind::picture, JournalKind::focus,
                                          JournalKind::cursor, JournalKind::capture, JournalKind::timer});
        desktop.clearJournal();
        return text;
    }
};

TEST_F(WheelCapture, OpeningPaintsBeforeShowingAndClosingUndoesTheCaptureFirst) {
    startWith({wheelOf(4)});
    pressToggleKey();
    EXPECT_EQ(everything(), "place wheel 666,310 588x460, paint wheel, show wheel, capture at 960,540, "
                            "timer of wheel 15");
    EXPECT_TRUE(isForeground("game"));
    pressToggleKey();
    EXPECT_EQ(everything(), "timer of wheel stopped, capture ended, hide wheel, cursor 960,540");
    engineConfig.takeFocus = true;
    desktop.addProgram("chat"); // in front of the game and so next in line when the wheel goes
    pressToggleKey();
    EXPECT_EQ(everything(), "place wheel 666,310 588x460, paint wheel, show wheel, focus wheel, "
                            "capture at 960,540, timer of wheel 15");
    pressToggleKey();
    EXPECT_EQ(everything(), "timer of wheel stopped, capture ended, hide wheel, cursor 960,540, focus game");
}

TEST_F(WheelCapture, FocusIsGivenBackOnlyToAWindowThatLivesAndHasLostIt) {
    startWith({wheelOf(4)});
    const WindowHandle chat = desktop.addProgram("chat");
    const auto givenBackAfter = [&](const std::function<void()>& meanwhile) {
        pressToggleKey();
        meanwhile();
        desktop.clearJournal();
        pressToggleKey();
        return journal({JournalKind::cursor, JournalKind::focus});
    };
    desktop.focusProgram(chat);
    EXPECT_EQ(givenBackAfter([] {}), "cursor 960,540");
    EXPECT_EQ(givenBackAfter([&] { desktop.focusProgram(desktop.windowNamed("game")); }),
              "cursor 960,540, focus chat");
    engineConfig.takeFocus = true;
    EXPECT_EQ(givenBackAfter([&] { desktop.closeProgram(chat); }), "cursor 960,540");
    desktop.foreground = nullptr; // nobody to borrow the focus from
    EXPECT_EQ(givenBackAfter([&] { EXPECT_EQ(desktop.foreground, nullptr); }), "cursor 960,540");
}

TEST_F(WheelCapture, OpensInTheMiddleOfTheCursorsMonitorOrThePrimaryOne) {
    startWith({wheelOf(4)});
    desktop.monitors = {{0, 0, 1920, 1080}, {1920, -200, 4480, 1240}};
    const std::pair<Point, Point> cases[] = {
        {{1919, 1079}, {666, 310}}, {{1920, -200}, {2906, 290}}, {{-50, 5000}, {666, 310}}};
    for (const auto& [cursor, topLeft] : cases) {
        desktop.cursor = cursor;
        pressToggleKey();
        EXPECT_EQ(desktop.windowNamed("wheel")->place.left, topLeft.x);
        EXPECT_EQ(desktop.windowNamed("wheel")->place.top, topLeft.y);
        pressToggleKey();
        EXPECT_EQ(desktop.cursor, cursor);
    }
}

TEST_F(WheelCapture, EachOpeningStartsAfreshInTheCentreOnTheSamePage) {
    startWith({wheelOf(4), wheelOf(4)});
    engineState.gridVisible = true;
    engineState.elementsVisible = true;
    pressToggleKey();
    aimAt(inRightArrow);
    clickMouse();
    aimAt(inFieldOfFour[0]);
    aimAt(inLeftArrow);
    desktop.moveMouse(50, 50); // not yet applied
    engineState.dwellProgress = 0.5F;
    pressToggleKey();
    desktop.moveMouse(70, 70); // nobody listens while closed
    pressToggleKey();
    EXPECT_EQ(engineState.hoveredField, -1);
    EXPECT_EQ(engineState.hoveredArrow, -1);
    EXPECT_EQ(engineState.dwellProgress, 0);
    EXPECT_EQ(engineState.activeWheel, 1);
    desktop.advanceBy(15);
    EXPECT_EQ(virtualCursor(), inHole);
    EXPECT_TRUE(engineState.gridVisible);
    EXPECT_TRUE(engineState.elementsVisible);
}

TEST_F(WheelCapture, ACaptureThatOutlivesTheWheelWouldPassEventsOn) {
    startWith({wheelOf(4)});
    pressToggleKey();
    engineState.wheelVisible = false;
    desktop.moveMouse(5, 5);
    EXPECT_EQ(desktop.seenByPrograms, (std::vector<std::string>{"motion"}));
    EXPECT_EQ(engineState.pendingDx, 0);
}

TEST_F(WheelCapture, APressReportedTwiceRunsAFieldOnceAndTurnsTwoPages) {
    const std::pair<PressDelivery, std::int32_t> cases[] = {{PressDelivery::onceAsRaw, 1},
                                                            {PressDelivery::hookAndRaw, 2}};
    for (const auto& [delivery, wheelAfterArrow] : cases) {
        startWith({wheelOf(4), wheelOf(4), wheelOf(4)});
        engineState.activeWheel = 0;
        desktop.pressDelivery = delivery;
        pressToggleKey();
        aimAt(inRightArrow);
        clickMouse();
        EXPECT_EQ(engineState.activeWheel, wheelAfterArrow);
        EXPECT_TRUE(OverlayIsWheelVisible());
        aimAt(inFieldOfFour[1]);
        clickMouse();
        desktop.advanceBy(1000);
        EXPECT_EQ(journal({JournalKind::input}), "key 66 down, key 66 up");
    }
}

enum class To { closed, open, closedWithoutRestoration };

using Event = void (*)(EngineTest&);

struct Transition {
    const char* name; // begins with what the wheel was before
    Event event;
    To to;
    bool runsFunction = false;
};

constexpr Event toggle = [](EngineTest& t) { t.pressToggleKey(); };
constexpr Event toggleByShell = [](EngineTest&) { OverlayToggleWheel(); };
constexpr Event stop = [](EngineTest&) { OverlayEngineStop(); };
constexpr Event destroy = [](EngineTest& t) { t.desktop.destroyMainWindow(); };
template <std::uintptr_t command>
constexpr Event voice = [](EngineTest& t) { t.postToMain(MsgVoiceCommand, command); };
template <std::intptr_t index>
constexpr Event voiceField = [](EngineTest& t) { t.postToMain(MsgVoiceField, 0, index); };
template <std::int32_t x, std::int32_t y>
constexpr Event clickAt = [](EngineTest& t) {
    t.aimAt({x, y});
    t.clickMouse();
};
/// The wheel's window lies over the real cursor.
constexpr Event pressOnWindow = [](EngineTest& t) {
    t.aimAt(inFieldOfFour[0]);
    injectMouseButton(0, InputMotion::downUntilReleased);
    t.desktop.pumpMessages();
};

constexpr Event lock = [](EngineTest& t) { t.desktop.lockSession(true); };
constexpr Event unlockAndToggle = [](EngineTest& t) {
    t.desktop.lockSession(false);
    t.pressToggleKey();
};
/// Whatever opens or runs something, behind a locked screen.
constexpr Event tryEverythingLocked = [](EngineTest& t) {
    t.desktop.lockSession(true);
    for (const Event& event : {toggle, toggleByShell, voice<1>, voiceField<1>, voice<7>})
        event(t);
    EXPECT_EQ(t.desktop.screenWakeUps, 3) << "a word is all that some people have to end a screen saver with";
};
constexpr Event changeMonitors = [](EngineTest& t) { t.desktop.changeMonitors({{0, 0, 800, 600}}); };
constexpr Event askToClose = [](EngineTest& t) { t.desktop.askToClose("wheel"); };
constexpr Event destroyWindow = [](EngineTest& t) { t.desktop.destroyOverlay("wheel"); };
constexpr Event destroyWindowAndToggle = [](EngineTest& t) {
    t.desktop.destroyOverlay("wheel");
    t.pressToggleKey();
};
constexpr Event standStill = [](EngineTest& t) {
    t.desktop.captureWasSilent = true;
    t.desktop.advanceBy(15);
};

class WheelTransition : public WheelCapture, public testing::WithParamInterface<Transition> {};

TEST_P(WheelTransition, LeavesNoMechanismBehind) {
    const Transition& c = GetParam();
    startWith({wheelOf(4), wheelOf(4)});
    engineState.wheels[0].actions[3].steps.clear();
    const bool wasOpen = std::string(c.name).starts_with("Open");
    if (wasOpen)
        pressToggleKey();
    desktop.clearJournal();
    c.event(*this);
    const bool isOpen = c.to == To::open;
    EXPECT_EQ(OverlayIsWheelVisible(), isOpen);
    EXPECT_EQ(desktop.isCaptured(), isOpen);
    EXPECT_EQ(desktop.timers.size(), isOpen ? 1U : 0U);
    EXPECT_EQ(desktop.windowNamed("wheel")->isShown, isOpen);
    EXPECT_EQ(engineState.restorePending, c.to != To::closed);
    const bool isGivenBack = wasOpen && c.to == To::closed;
    EXPECT_EQ(journal({JournalKind::cursor}), isGivenBack ? "cursor 960,540" : "");
    EXPECT_EQ(desktop.clock.workerCount(), c.runsFunction ? 1U : 0U);
}

constexpr Transition transitions[] = {
    {"ClosedToggleKey", toggle, To::open},
    {"ClosedToggleByShell", toggleByShell, To::open},
    {"ClosedVoiceShow", voice<1>, To::open},
    {"ClosedVoiceHide", voice<2>, To::closed},
    {"ClosedVoiceField", voiceField<1>, To::closed, true},
    {"ClosedStop", stop, To::closed},
    {"ClosedAndLocked", tryEverythingLocked, To::closed},
    {"ClosedUnlockAndToggle", unlockAndToggle, To::open},
    {"ClosedMonitorChange", changeMonitors, To::closed},
    {"ClosedCloseRequest", askToClose, To::closed},
    {"ClosedWindowDestroyed", destroyWindow, To::closed},
    {"ClosedWindowDestroyedAndToggle", destroyWindowAndToggle, To::open},
    {"OpenToggleKey", toggle, To::closed},
    {"OpenToggleByShell", toggleByShell, To::closed},
    {"OpenVoiceShow", voice<1>, To::open},
    {"OpenVoiceHide", voice<2>, To::closed},
    {"OpenSelectionOnField", clickAt<334, 130>, To::closed, true},
    {"OpenSelectionOnFieldWithoutSteps", clickAt<194, 190>, To::closed},
    {"OpenPressOnWindow", pressOnWindow, To::closed, true},
    {"OpenSelectionOnArrow", clickAt<20, 230>, To::open},
    {"OpenSelectionInHole", clickAt<294, 231>, To::open},
    {"OpenSelectionBesideRing", clickAt<80, 20>, To::open},
    {"OpenVoiceField", voiceField<1>, To::closed, true},
    {"OpenVoiceFieldWithoutSteps", voiceField<3>, To::closed},
    {"OpenStop", stop, To::closedWithoutRestoration},
    {"OpenDestroy", destroy, To::closedWithoutRestoration},
    {"OpenLock", lock, To::closed},
    {"OpenAndLocked", tryEverythingLocked, To::closed},
    {"OpenMonitorChange", changeMonitors, To::closed},
    {"OpenCloseRequest", askToClose, To::closed},
    {"OpenWindowDestroyed", destroyWindow, To::closed},
    {"OpenOwnerStoodStill", standStill, To::closed},
};

INSTANTIATE_TEST_SUITE_P(Rows, WheelTransition, testing::ValuesIn(transitions),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
