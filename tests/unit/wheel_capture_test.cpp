#include "engine_test.h"
#include "overlay.h"
#include "platform/injection.h"
#include "wheel/capture.h"

namespace {

using Texts = std::vector<std::string>;

class WheelCapture : public EngineTest {
protected:
    Texts everything() const {
        return desktop.journalOf({JournalKind::window, JournalKind::picture, JournalKind::focus,
                                  JournalKind::cursor, JournalKind::capture, JournalKind::timer});
    }
};

TEST_F(WheelCapture, OpeningPaintsBeforeShowingAndClosingUndoesTheCaptureFirst) {
    startWith({wheelOf(4)});
    pressToggleKey();
    EXPECT_EQ(everything(), (Texts{"place wheel 666,310 588x460", "paint wheel", "show wheel",
                                   "capture at 960,540", "timer of wheel 15"}));
    EXPECT_TRUE(OverlayIsWheelVisible());
    EXPECT_EQ(desktop.topWindow(), desktop.windowNamed("wheel"));
    EXPECT_EQ(desktop.pinnedAt, (Rect{960, 540, 961, 541}));
    EXPECT_TRUE(isForeground("game"));

    desktop.clearJournal();
    pressToggleKey();
    EXPECT_EQ(everything(),
              (Texts{"timer of wheel stopped", "capture ended", "hide wheel", "cursor 960,540"}));
    EXPECT_FALSE(OverlayIsWheelVisible());
    EXPECT_FALSE(desktop.pinnedAt);
    EXPECT_TRUE(isForeground("game"));
}

TEST_F(WheelCapture, TakeFocusBorrowsTheForegroundAndGivesItBack) {
    startWith({wheelOf(4)});
    engineConfig.takeFocus = true;
    desktop.addProgram("chat"); // in front of the game and so next in line when the wheel goes
    pressToggleKey();
    EXPECT_EQ(everything(), (Texts{"place wheel 666,310 588x460", "paint wheel", "show wheel", "focus wheel",
                                   "capture at 960,540", "timer of wheel 15"}));
    EXPECT_TRUE(isForeground("wheel"));
    pressToggleKey();
    EXPECT_TRUE(isForeground("game"));
}

TEST_F(WheelCapture, FocusIsGivenBackOnlyToAWindowThatLivesAndHasLostIt) {
    startWith({wheelOf(4)});
    const WindowHandle chat = desktop.addProgram("chat");
    struct FocusCase {
        const char* what;
        bool takeFocus;
        void (*meanwhile)(SimulatedDesktop&, WindowHandle chat);
        const char* expected;
    };
    const FocusCase cases[] = {
        {"nothing happened", false, [](SimulatedDesktop&, WindowHandle) {}, "chat"},
        {"another program came to the front", false,
         [](SimulatedDesktop& d, WindowHandle) { d.focusProgram(d.windowNamed("game")); }, "chat"},
        {"the saved window died", true, [](SimulatedDesktop& d, WindowHandle w) { d.closeProgram(w); },
         "game"},
    };
    for (const FocusCase& c : cases) {
        SCOPED_TRACE(c.what);
        engineConfig.takeFocus = c.takeFocus;
        desktop.focusProgram(chat);
        pressToggleKey();
        c.meanwhile(desktop, chat);
        pressToggleKey();
        EXPECT_TRUE(isForeground(c.expected));
        EXPECT_EQ(desktop.cursor, (Point{960, 540})); // the cursor comes back in any case
    }
    desktop.foreground = nullptr;
    pressToggleKey();
    EXPECT_EQ(desktop.foreground, nullptr) << "nobody to borrow the focus from";
    pressToggleKey();
    EXPECT_EQ(desktop.foreground, nullptr);
}

TEST_F(WheelCapture, OpensInTheMiddleOfTheCursorsMonitorOrThePrimaryOne) {
    startWith({wheelOf(4)});
    desktop.monitors = {{0, 0, 1920, 1080}, {1920, -200, 4480, 1240}};
    struct MonitorCase {
        Point cursor;
        Rect place;
    };
    constexpr MonitorCase cases[] = {
        {{1919, 1079}, {666, 310, 1254, 770}},
        {{1920, -200}, {2906, 290, 3494, 750}},
        {{-50, 5000}, {666, 310, 1254, 770}},
    };
    for (const MonitorCase& c : cases) {
        desktop.cursor = c.cursor;
        pressToggleKey();
        EXPECT_EQ(desktop.windowNamed("wheel")->place, c.place);
        pressToggleKey();
        EXPECT_EQ(desktop.cursor, c.cursor);
    }
}

TEST_F(WheelCapture, EachOpeningStartsAfreshInTheCentre) {
    startWith({wheelOf(4), wheelOf(4)});
    pressToggleKey();
    aimAt(inRightArrow);
    clickMouse();
    aimAt(inFieldOfFour[0]);
    aimAt(inLeftArrow);
    desktop.moveMouse(50, 50); // not yet applied
    engineState.dwellProgress = 0.5F;
    pressToggleKey();
    EXPECT_EQ(engineState.hoveredField, -1);
    desktop.moveMouse(70, 70); // nobody listens while closed
    pressToggleKey();
    EXPECT_EQ(engineState.cursorX, 294);
    EXPECT_EQ(engineState.cursorY, 230);
    EXPECT_EQ(engineState.hoveredArrow, -1);
    EXPECT_EQ(engineState.dwellProgress, 0);
    EXPECT_EQ(engineState.activeWheel, 1) << "the page is kept";
    desktop.advanceBy(15);
    EXPECT_EQ(engineState.cursorX, 294);
}

TEST_F(WheelCapture, TheRealMouseIsHeldBackWhileInjectedEventsPass) {
    startWith({wheelOf(4)});
    const auto playMouse = [this] {
        desktop.seenByPrograms.clear();
        desktop.moveMouse(-700, -500);
        for (std::uint32_t button = 0; button < 5; ++button) {
            desktop.pressMouse(button);
            desktop.releaseMouse(button);
        }
        desktop.turnMouseWheel();
        injectMouseButton(1, InputMotion::downUntilReleased);
        injectMouseButton(1, InputMotion::up);
        return desktop.seenByPrograms;
    };
    desktop.cursor = {960, 200}; // beside the wheel's window
    pressToggleKey();
    EXPECT_EQ(playMouse(), (Texts{"injected right down", "injected right up"}));
    EXPECT_EQ(desktop.cursor, (Point{960, 200}));
    EXPECT_TRUE(OverlayIsWheelVisible()) << "the press lay beside the ring";
    pressToggleKey();
    EXPECT_EQ(playMouse().size(), 14U);
    EXPECT_EQ(desktop.cursor, (Point{260, -300}));
}

TEST_F(WheelCapture, ACaptureThatOutlivesTheWheelWouldPassEventsOn) {
    startWith({wheelOf(4)});
    pressToggleKey();
    engineState.wheelVisible = false;
    desktop.moveMouse(5, 5);
    EXPECT_EQ(desktop.seenByPrograms, (Texts{"motion"}));
    EXPECT_EQ(engineState.pendingDx, 0);
}

TEST_F(WheelCapture, AButtonReleasedDuringTheCaptureDoesNotStayDownForPrograms) {
    startWith({wheelOf(4)});
    desktop.cursor = {100, 100};
    desktop.pressMouse(1);
    pressToggleKey();
    desktop.releaseMouse(1);
    EXPECT_EQ(desktop.seenByPrograms, (Texts{"right down"}));
    pressToggleKey();
    EXPECT_EQ(desktop.seenByPrograms, (Texts{"right down", "right up"}));
}

TEST_F(WheelCapture, OnlyTheLeftButtonSelects) {
    startWith({wheelOf(4)});
    pressToggleKey();
    aimAt(inFieldOfFour[2]);
    for (std::uint32_t button = 1; button < 5; ++button) {
        desktop.pressMouse(button);
        desktop.releaseMouse(button);
        desktop.settle();
        EXPECT_TRUE(OverlayIsWheelVisible()) << button;
    }
    clickMouse();
    EXPECT_FALSE(OverlayIsWheelVisible());
}

TEST_F(WheelCapture, APressReportedTwiceRunsAFieldOnceAndTurnsTwoPages) {
    struct DeliveryCase {
        PressDelivery delivery;
        std::int32_t wheelAfterArrow;
    };
    for (const auto& [delivery, wheelAfterArrow] :
         {DeliveryCase{PressDelivery::onceAsRaw, 1}, DeliveryCase{PressDelivery::hookAndRaw, 2}}) {
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
        EXPECT_EQ(desktop.journalOf({JournalKind::input}), (Texts{"key 66 down", "key 66 up"}));
    }
}

TEST_F(WheelCapture, AnOrdinaryPressOnTheWheelsWindowSelectsToo) {
    startWith({wheelOf(4)});
    pressToggleKey(); // the window lies over the real cursor
    aimAt(inFieldOfFour[0]);
    injectMouseButton(0, InputMotion::downUntilReleased);
    desktop.pumpMessages();
    EXPECT_FALSE(OverlayIsWheelVisible());
}

TEST_F(WheelCapture, LeavesGridAndLabelsAsTheyAre) {
    startWith({wheelOf(4)});
    engineState.gridVisible = true;
    engineState.elementsVisible = true;
    pressToggleKey();
    pressToggleKey();
    EXPECT_TRUE(engineState.gridVisible);
    EXPECT_TRUE(engineState.elementsVisible);
}

enum class From { closed, open };
enum class To { closed, open, closedWithoutRestoration };

struct Transition {
    const char* name;
    From from;
    void (*event)(EngineTest&);
    To to;
    bool runsFunction;
};

void PrintTo(const Transition& row, std::ostream* out) {
    *out << row.name;
}

void toggle(EngineTest& t) {
    t.pressToggleKey();
}
void toggleByShell(EngineTest&) {
    OverlayToggleWheel();
}
template <std::uintptr_t command>
void voice(EngineTest& t) {
    t.postToMain(MsgVoiceCommand, command);
}
void voiceField(EngineTest& t) {
    t.postToMain(MsgVoiceField, 0, 1);
}
template <int x, int y>
void clickAt(EngineTest& t) {
    t.aimAt(x, y);
    t.clickMouse();
}
void stop(EngineTest&) {
    OverlayEngineStop();
}
void destroy(EngineTest& t) {
    t.desktop.destroyMainWindow();
}

class WheelTransition : public WheelCapture, public testing::WithParamInterface<Transition> {};

TEST_P(WheelTransition, LeavesNoMechanismBehind) {
    const Transition& c = GetParam();
    startWith({wheelOf(4), wheelOf(4)});
    if (c.from == From::open)
        pressToggleKey();
    desktop.clearJournal();
    c.event(*this);
    const bool isOpen = c.to == To::open;
    EXPECT_EQ(OverlayIsWheelVisible(), isOpen);
    EXPECT_EQ(desktop.isCaptured(), isOpen);
    EXPECT_EQ(desktop.pinnedAt.has_value(), isOpen);
    EXPECT_EQ(desktop.timerPeriod(desktop.windowNamed("wheel")).has_value(), isOpen);
    EXPECT_EQ(desktop.windowNamed("wheel")->isShown, isOpen);
    EXPECT_EQ(engineState.restorePending, c.to != To::closed);
    const bool isGivenBack = c.from == From::open && c.to == To::closed;
    EXPECT_EQ(desktop.journalOf({JournalKind::cursor}).size(), isGivenBack ? 1U : 0U);
    EXPECT_EQ(desktop.cursor, (Point{960, 540}));
    desktop.advanceBy(1000);
    EXPECT_EQ(!played().empty(), c.runsFunction);
}

constexpr Transition transitions[] = {
    {"ClosedToggleKey", From::closed, toggle, To::open, false},
    {"ClosedToggleByShell", From::closed, toggleByShell, To::open, false},
    {"ClosedVoiceShow", From::closed, voice<1>, To::open, false},
    {"ClosedVoiceHide", From::closed, voice<2>, To::closed, false},
    {"ClosedVoiceField", From::closed, voiceField, To::closed, true},
    {"ClosedStop", From::closed, stop, To::closed, false},
    {"OpenToggleKey", From::open, toggle, To::closed, false},
    {"OpenToggleByShell", From::open, toggleByShell, To::closed, false},
    {"OpenVoiceShow", From::open, voice<1>, To::open, false},
    {"OpenVoiceHide", From::open, voice<2>, To::closed, false},
    {"OpenSelectionOnField", From::open, clickAt<334, 130>, To::closed, true},
    {"OpenSelectionOnArrow", From::open, clickAt<20, 230>, To::open, false},
    {"OpenSelectionInHole", From::open, clickAt<294, 231>, To::open, false},
    {"OpenSelectionBesideRing", From::open, clickAt<80, 20>, To::open, false},
    {"OpenVoiceField", From::open, voiceField, To::closed, true},
    {"OpenStop", From::open, stop, To::closedWithoutRestoration, false},
    {"OpenDestroy", From::open, destroy, To::closedWithoutRestoration, false},
};

INSTANTIATE_TEST_SUITE_P(Rows, WheelTransition, testing::ValuesIn(transitions),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(WheelCapture, WhatWasSavedIsGivenBackAtMostOnceAndAnewForEachOpening) {
    startWith({wheelOf(4)});
    pressToggleKey();
    OverlayEngineStop(); // closed without restoration
    desktop.cursor = {5, 6};
    OverlayToggleWheel();
    pressToggleKey(); // given back by the stop, so nobody hears it
    OverlayToggleWheel();
    EXPECT_EQ(desktop.journalOf({JournalKind::cursor}), (Texts{"cursor 5,6"}));
    restoreFocus();
    EXPECT_EQ(desktop.journalOf({JournalKind::cursor}).size(), 1U);
}

TEST_F(WheelCapture, AFieldWithoutStepsClosesTheWheelAndRunsNothing) {
    startWith({wheelOf(4)});
    engineState.wheels[0].actions[3].steps.clear();
    pressToggleKey();
    aimAt(inFieldOfFour[3]);
    clickMouse();
    EXPECT_FALSE(OverlayIsWheelVisible());
    EXPECT_EQ(desktop.clock.workerCount(), 0U);
    EXPECT_EQ(desktop.journalOf({JournalKind::cursor}), (Texts{"cursor 960,540"}));
}

} // namespace
