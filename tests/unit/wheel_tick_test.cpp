#include "engine_test.h"
#include "overlay.h"
#include "picture_text.h"
#include "platform/clock.h"
#include "wheel/tick.h"

#include <limits>

namespace {

class WheelTick : public EngineTest {
protected:
    /// An open wheel with the eye tracker active and no sample yet.
    void openWithGaze(std::vector<Wheel> wheels) {
        startWith(std::move(wheels));
        engineConfig.gazeEnabled = true;
        engineState.gazeStatus = gazeStatusActive;
        pressToggleKey();
    }

    /// The eye looks at a layer point; as the tracker tells it, in ten-thousandths of the screen.
    void lookAt(std::int32_t x, std::int32_t y) {
        const Rect place = desktop.windowNamed("wheel")->place;
        const Rect& screen = desktop.monitors.front();
        engineState.gazeX = ((place.left + x) * 10000 + screen.width() / 2) / screen.width();
        engineState.gazeY = ((place.top + y) * 10000 + screen.height() / 2) / screen.height();
        engineState.gazeSampleTick = tickCount();
    }
    void lookAt(Point point) { lookAt(point.x, point.y); }

    /// Puts the virtual cursor there without a mouse.
    static void putCursorAt(Point point) {
        engineState.cursorX = point.x;
        engineState.cursorY = point.y;
    }

    bool ringIsPainted() {
        return !linesOf(pictureLines(*desktop.windowNamed("wheel")->picture), "ellipse").empty();
    }
};

TEST_F(WheelTick, MotionIsSummedBetweenTicksAndOnlyTheSumIsClamped) {
    struct MotionCase {
        std::vector<Point> counts;
        Point cursor;
    };
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    const MotionCase cases[] = {
        {{{1, 0}}, {295, 230}},
        {{{1000, 1000}, {-990, -995}}, {304, 235}},
        {{{200, 200}, {200, 200}}, {587, 459}},
        {{{-200, -200}, {-95, -31}}, {0, 0}},
        {{{-294, -230}}, {0, 0}},
        {{{293, 229}}, {587, 459}},
        {{{most, least}, {most, least}}, {587, 0}}, // a device may say anything
        {{{least, most}, {least, most}, {least, most}}, {0, 459}},
    };
    startWith({wheelOf(4)});
    for (const MotionCase& c : cases) {
        pressToggleKey();
        const int paintsBefore = wheelPaintCount();
        for (const Point& count : c.counts)
            desktop.moveMouse(count.x, count.y);
        desktop.advanceBy(14);
        EXPECT_EQ(engineState.cursorX, 294);
        EXPECT_EQ(wheelPaintCount(), paintsBefore);
        desktop.advanceBy(1);
        EXPECT_EQ(engineState.cursorX, c.cursor.x);
        EXPECT_EQ(engineState.cursorY, c.cursor.y);
        EXPECT_EQ(wheelPaintCount(), paintsBefore + 1);
        pressToggleKey();
    }
}

TEST_F(WheelTick, AnIdleWheelPaintsNothing) {
    openWithGaze({wheelOf(4)});
    desktop.advanceBy(1500);
    EXPECT_EQ(wheelPaintCount(), 1) << "the one before it was shown";
    desktop.moveMouse(0, 0);
    desktop.advanceBy(15);
    EXPECT_EQ(wheelPaintCount(), 1);
}

TEST_F(WheelTick, HoverFollowsTheCursorOverFieldsAndArrows) {
    struct HoverCase {
        Point point;
        std::int32_t field;
        std::int32_t arrow;
    };
    constexpr HoverCase cases[] = {{inFieldOfFour[0], 0, -1}, {inRightArrow, -1, 1},
                                   {inFieldOfFour[3], 3, -1}, {inLeftArrow, -1, 0},
                                   {inHole, -1, -1},          {besideRing, -1, -1}};
    startWith({wheelOf(4), wheelOf(4)});
    pressToggleKey();
    for (const HoverCase& c : cases) {
        aimAt(c.point);
        EXPECT_EQ(engineState.hoveredField, c.field);
        EXPECT_EQ(engineState.hoveredArrow, c.arrow);
    }
}

TEST_F(WheelTick, TheGazePullsThirtyFivePercentTruncatedTowardTheCursor) {
    struct PullCase {
        std::int32_t gazeX; // 1 is 0.192 px of the screen; 5000 is the wheel's centre
        std::int32_t gazeY; // 1 is 0.108 px
        Point step;
    };
    constexpr PullCase cases[] = {
        {5000, 5000, {0, 0}},       {5100, 5000, {6, 0}}, // 19.2 px away
        {4900, 5100, {-6, 3}},                            // 10.8 px
        {5015, 5000, {1, 0}},                             // 2.88 px: the last pull that moves
        {5014, 4974, {0, 0}},       // 2.69 and 2.81 px: 0.94 and 0.98 truncate to nothing
        {4985, 4973, {-1, -1}},     // 2.88 and 2.92 px
        {10000, 10000, {293, 189}}, // far outside: the clamp ends the way of 336 at the layer's edge
    };
    openWithGaze({wheelOf(4)});
    for (const PullCase& c : cases) {
        putCursorAt(inHole);
        engineState.gazeDriven = false;
        engineState.gazeX = c.gazeX;
        engineState.gazeY = c.gazeY;
        engineState.gazeSampleTick = tickCount();
        desktop.advanceBy(15);
        EXPECT_EQ((Point{engineState.cursorX - 294, engineState.cursorY - 230}), c.step)
            << c.gazeX << " " << c.gazeY;
        EXPECT_TRUE(engineState.gazeDriven);
    }
}

TEST_F(WheelTick, TheGazeMapsOntoThePrimaryScreenAlsoWhenTheWheelIsOnAnother) {
    desktop.monitors = {{0, 0, 1000, 1000}, {1000, 0, 2000, 1000}};
    desktop.cursor = {1500, 500};
    openWithGaze({wheelOf(4)});
    engineState.gazeX = 5000; // far to the left of the wheel's window at 1206
    engineState.gazeY = 5000;
    engineState.gazeSampleTick = tickCount();
    desktop.advanceBy(15);
    EXPECT_EQ(engineState.cursorX, 0); // 35 percent of 1000 px
    EXPECT_EQ(engineState.cursorY, 230);
}

TEST_F(WheelTick, TheGazePullsOnlyWithAFreshSampleAndARestedMouse) {
    struct GateCase {
        const char* what;
        std::uint64_t sampleAgeMs;
        std::uint64_t mouseRestMs;
        bool isEnabled;
        std::int32_t status;
        bool pulls;
    };
    constexpr GateCase cases[] = {
        {"fresh and rested", 0, 701, true, 4, true},
        {"sample just fresh", 249, 5000, true, 4, true},
        {"sample just stale", 250, 5000, true, 4, false},
        {"mouse just rested", 10, 701, true, 4, true},
        {"mouse not rested", 10, 700, true, 4, false},
        {"gaze off", 10, 5000, false, 4, false},
        {"tracker still searching", 10, 5000, true, 1, false},
        {"tracker failed", 10, 5000, true, 5, false},
    };
    openWithGaze({wheelOf(4)});
    for (const GateCase& c : cases) {
        putCursorAt(inHole);
        engineConfig.gazeEnabled = c.isEnabled;
        engineState.gazeStatus = c.status;
        lookAt(inFieldOfFour[0]);
        const std::uint64_t nextTick = tickCount() + 15;
        engineState.gazeSampleTick = nextTick - c.sampleAgeMs;
        engineState.lastMouseMoveTick = nextTick - c.mouseRestMs;
        desktop.advanceBy(15);
        EXPECT_EQ(engineState.cursorY != 230, c.pulls) << c.what;
    }
}

TEST_F(WheelTick, TheMouseKeepsTheGazeAwayForSevenHundredMillisecondsButNotPastAClosing) {
    openWithGaze({wheelOf(4)});
    aimAt(290, 230);
    const std::uint64_t moved = desktop.clock.now();
    const auto lookUntil = [this](std::uint64_t tick) {
        while (desktop.clock.now() < tick) {
            lookAt(inHole);
            desktop.advanceBy(15);
        }
    };
    lookUntil(moved + 690);
    EXPECT_EQ(engineState.cursorX, 290);
    lookUntil(moved + 705);
    EXPECT_EQ(engineState.cursorX, 291);

    aimAt(290, 230);
    pressToggleKey();
    pressToggleKey();
    lookAt(300, 230);
    desktop.advanceBy(15);
    EXPECT_EQ(engineState.cursorX, 296) << "an opening starts afresh";
}

TEST_F(WheelTick, AfterOpeningALiveGazePullsAtOnceUnlessTheMachineHasJustStarted) {
    for (const auto& [bootedBeforeMs, pulls] : {std::pair{690U, true}, std::pair{600U, false}}) {
        desktop.bootedBeforeMs = bootedBeforeMs - desktop.clock.now(); // so that the first tick is at + 15
        openWithGaze({wheelOf(4)});
        lookAt(inFieldOfFour[0]);
        desktop.advanceBy(15);
        EXPECT_EQ(engineState.gazeDriven, pulls);
        pressToggleKey();
    }
}

TEST_F(WheelTick, ADwellSelectsAfterExactlyItsTimeAlsoWhenTheGazeHasGoneStale) {
    openWithGaze({wheelOf(4)});
    const std::uint64_t start = desktop.clock.now();
    lookAt(294, 100); // 130 px up: the second tick brings the cursor into field 0
    desktop.advanceTo(start + 15);
    EXPECT_EQ(engineState.cursorY, 185);
    EXPECT_EQ(engineState.dwellTarget, -1) << "in the hole";
    desktop.advanceTo(start + 30);
    EXPECT_EQ(engineState.dwellTarget, 0);
    EXPECT_EQ(engineState.dwellProgress, 0);
    desktop.advanceTo(start + 480); // long after the sample has gone stale
    EXPECT_EQ(engineState.dwellProgress, 0.5F);
    EXPECT_TRUE(ringIsPainted());
    desktop.advanceTo(start + 929);
    EXPECT_TRUE(OverlayIsWheelVisible());
    const int paintsBefore = wheelPaintCount();
    desktop.advanceTo(start + 930);
    EXPECT_FALSE(OverlayIsWheelVisible());
    EXPECT_EQ(wheelPaintCount(), paintsBefore);
    desktop.advanceBy(1000);
    EXPECT_EQ(played(start), (std::vector<TimedText>{{930 + 250, "key 65 down"}, {930 + 310, "key 65 up"}}));
}

TEST_F(WheelTick, TheDwellStartsAnewOnAnotherField) {
    openWithGaze({wheelOf(4)});
    putCursorAt(inFieldOfFour[0]);
    lookAt(inFieldOfFour[0]);
    desktop.advanceBy(615);
    EXPECT_GT(engineState.dwellProgress, 0.6F);
    putCursorAt(inFieldOfFour[1]);
    lookAt(inFieldOfFour[1]);
    desktop.advanceBy(15);
    EXPECT_EQ(engineState.dwellTarget, 1);
    EXPECT_EQ(engineState.dwellProgress, 0);
    desktop.advanceBy(899);
    EXPECT_TRUE(OverlayIsWheelVisible());
    desktop.advanceBy(1);
    EXPECT_FALSE(OverlayIsWheelVisible());
}

TEST_F(WheelTick, OneCountOfTheMouseEndsGazeControlAndTheRingAtOnce) {
    openWithGaze({wheelOf(4)});
    putCursorAt(inFieldOfFour[0]);
    lookAt(inFieldOfFour[0]);
    desktop.advanceBy(300);
    EXPECT_TRUE(ringIsPainted());
    desktop.moveMouse(1, 0);
    desktop.advanceBy(15);
    EXPECT_FALSE(engineState.gazeDriven);
    EXPECT_EQ(engineState.dwellProgress, 0);
    EXPECT_FALSE(ringIsPainted());
    desktop.advanceBy(5000);
    EXPECT_TRUE(OverlayIsWheelVisible()) << "no dwell without the gaze";
}

TEST_F(WheelTick, AnArrowUnderTheGazePagesAgainAndAgain) {
    openWithGaze({wheelOf(4), wheelOf(4), wheelOf(4)});
    putCursorAt(inRightArrow);
    lookAt(inRightArrow);
    desktop.advanceBy(15); // the dwell starts
    const std::uint64_t start = desktop.clock.now();
    const int paintsBefore = wheelPaintCount();
    desktop.advanceTo(start + 899);
    EXPECT_EQ(engineState.activeWheel, 0);
    EXPECT_EQ(engineState.dwellTarget, 101);
    desktop.advanceTo(start + 900);
    EXPECT_EQ(engineState.activeWheel, 1);
    EXPECT_EQ(wheelPaintCount(), paintsBefore + 60) << "59 rings and the new page";
    EXPECT_FALSE(ringIsPainted());
    desktop.advanceTo(start + 900 + 914); // the next tick starts it anew
    EXPECT_EQ(engineState.activeWheel, 1);
    desktop.advanceTo(start + 900 + 915);
    EXPECT_EQ(engineState.activeWheel, 2);
    desktop.advanceTo(start + 900 + 2 * 915);
    EXPECT_EQ(engineState.activeWheel, 0);
    EXPECT_TRUE(OverlayIsWheelVisible());
}

TEST_F(WheelTick, ADwellOfZeroNeverSelectsWhileTheCursorStillFollows) {
    openWithGaze({wheelOf(4)});
    engineConfig.gazeDwell = 0;
    for (int i = 0; i < 100; ++i) {
        lookAt(inFieldOfFour[0]);
        desktop.advanceBy(15);
    }
    EXPECT_EQ(engineState.hoveredField, 0);
    EXPECT_TRUE(engineState.gazeDriven);
    EXPECT_EQ(engineState.dwellProgress, 0);
    EXPECT_TRUE(OverlayIsWheelVisible());
}

TEST_F(WheelTick, LookingAtNothingSelectsNothing) {
    openWithGaze({wheelOf(4)});
    for (int i = 0; i < 200; ++i) {
        lookAt(inHole);
        desktop.advanceBy(15);
    }
    EXPECT_TRUE(engineState.gazeDriven);
    EXPECT_EQ(engineState.dwellTarget, -1);
    EXPECT_TRUE(OverlayIsWheelVisible());
    EXPECT_EQ(wheelPaintCount(), 1);
}

} // namespace
