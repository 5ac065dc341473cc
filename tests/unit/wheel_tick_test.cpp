#include "engine_test.h"
#include "gaze/gaze_thread.h"
#include "platform/clock.h"
#include "wheel/tick.h"

#include <limits>
#include <tuple>

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
    void lookAt(Point point) {
        const Rect place = desktop.windowNamed("wheel")->place;
        const Rect& screen = desktop.monitors.front();
        engineState.gazeX = ((place.left + point.x) * 10000 + screen.width() / 2) / screen.width();
        engineState.gazeY = ((place.top + point.y) * 10000 + screen.height() / 2) / screen.height();
        engineState.gazeSampleTick = tickCount();
    }

    /// Puts the cursor there and lets the eye look at it.
    void restAt(Point point) {
        putCursorAt(point);
        lookAt(point);
    }

    /// The eye goes on looking there, tick by tick.
    void lookUntil(std::uint64_t tick, Point point) {
        while (desktop.clock.now() < tick) {
            lookAt(point);
            desktop.advanceBy(15);
        }
    }

    bool ringIsPainted() { return !shownLines("ellipse").empty(); }
};

TEST_F(WheelTick, MotionIsSummedBetweenTicksAndOnlyTheSumIsClamped) {
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    const std::pair<std::vector<Point>, Point> cases[] = {
        {{{1, 0}}, {295, 230}},
        {{{1000, 1000}, {-990, -995}}, {304, 235}},
        {{{-294, -230}}, {0, 0}},
        {{{-200, -200}, {-95, -31}}, {0, 0}},
        {{{293, 229}}, {587, 459}},
        {{{294, 230}}, {587, 459}},
        {{{most, least}, {most, least}}, {587, 0}}, // a device may say anything
        {{{least, most}, {least, most}, {least, most}}, {0, 459}},
    };
    startWith({wheelOf(4)});
    for (const auto& [counts, expected] : cases) {
        pressToggleKey();
        const int paintsBefore = wheelPaintCount();
        for (const Point& count : counts)
            desktop.moveMouse(count.x, count.y);
        desktop.advanceBy(14);
        EXPECT_EQ(virtualCursor(), inHole);
        EXPECT_EQ(wheelPaintCount(), paintsBefore);
        desktop.advanceBy(1);
        EXPECT_EQ(virtualCursor(), expected);
        EXPECT_EQ(wheelPaintCount(), paintsBefore + 1);
        pressToggleKey();
    }
}

TEST_F(WheelTick, AnIdleWheelPaintsNothingAndNeitherAGazeAtNothingNorADwellOfZeroSelects) {
    openWithGaze({wheelOf(4)});
    const int paintsBefore = wheelPaintCount();
    desktop.advanceBy(1500);
    desktop.moveMouse(0, 0);
    lookUntil(5000, inHole);
    EXPECT_TRUE(engineState.gazeDriven);
    EXPECT_EQ(engineState.dwellTarget, -1);
    EXPECT_TRUE(OverlayIsWheelVisible());
    EXPECT_EQ(wheelPaintCount(), paintsBefore);
    engineConfig.gazeDwell = 0; // the cursor still follows
    lookUntil(6500, inFieldOfFour[0]);
    EXPECT_EQ(engineState.hoveredField, 0);
    EXPECT_EQ(engineState.dwellProgress, 0);
    EXPECT_TRUE(OverlayIsWheelVisible());
}

TEST_F(WheelTick, TheGazePullsThirtyFivePercentTruncatedTowardTheCursor) {
    // Of the gaze, 1 is 0.192 px of the screen in x and 0.108 px in y; 5000 is the wheel's centre.
    const std::pair<Point, Point> cases[] = {
        {{5000, 5000}, {294, 230}},   {{5100, 5000}, {300, 230}}, // 19.2 px away
        {{4900, 5100}, {288, 233}},                               // 10.8 px
        {{5015, 5000}, {295, 230}},                               // 2.88 px: the last pull that moves
        {{5014, 4974}, {294, 230}},   // 2.69 and 2.81 px: 0.94 and 0.98 truncate to nothing
        {{4985, 4973}, {293, 229}},   // 2.88 and 2.92 px
        {{10000, 10000}, {587, 419}}, // far outside: the clamp ends the way of 336 at the layer's edge
    };
    openWithGaze({wheelOf(4)});
    const auto pull = [this](Point gaze) {
        engineState.gazeX = gaze.x;
        engineState.gazeY = gaze.y;
        engineState.gazeSampleTick = tickCount();
        desktop.advanceBy(15);
        return virtualCursor();
    };
    for (const auto& [gaze, expected] : cases) {
        putCursorAt(inHole);
        EXPECT_EQ(pull(gaze), expected) << gaze.x << " " << gaze.y;
    }
    // On another monitor the gaze still maps onto the primary one: 35 percent of 1000 px to the left.
    pressToggleKey();
    desktop.monitors = {{0, 0, 1000, 1000}, {1000, 0, 2000, 1000}};
    desktop.cursor = {1500, 500};
    pressToggleKey();
    EXPECT_EQ(pull({5000, 5000}), (Point{0, 230}));
}

TEST_F(WheelTick, TheGazePullsOnlyWithAFreshSampleAndARestedMouse) {
    // age of the sample and rest of the mouse in ms, gaze enabled, status of the tracker, does it pull
    constexpr std::tuple<std::uint64_t, std::uint64_t, bool, std::int32_t, bool> cases[] = {
        {0, 701, true, 4, true},   {249, 5000, true, 4, true},  {250, 5000, true, 4, false},
        {10, 700, true, 4, false}, {10, 5000, false, 4, false}, {10, 5000, true, 1, false},
        {10, 5000, true, 5, false}};
    openWithGaze({wheelOf(4)});
    for (const auto& [sampleAge, mouseRest, isEnabled, status, pulls] : cases) {
        putCursorAt(inHole);
        engineConfig.gazeEnabled = isEnabled;
        engineState.gazeStatus = status;
        lookAt(inFieldOfFour[0]);
        const std::uint64_t nextTick = tickCount() + 15;
        engineState.gazeSampleTick = nextTick - sampleAge;
        engineState.lastMouseMoveTick = nextTick - mouseRest;
        desktop.advanceBy(15);
        EXPECT_EQ(engineState.cursorY != 230, pulls) << sampleAge << " " << mouseRest << " " << status;
    }
}

TEST_F(WheelTick, AfterOpeningALiveGazePullsAtOnceUnlessTheMachineHasJustStarted) {
    for (const auto& [bootedBeforeMs, pulls] : {std::pair{690U, true}, std::pair{600U, false}}) {
        desktop.bootedBeforeMs = bootedBeforeMs - desktop.clock.now(); // so that the first tick is at + 15
        openWithGaze({wheelOf(4)});
        lookAt(inFieldOfFour[0]);
        desktop.advanceBy(15);
        EXPECT_EQ(engineState.gazeDriven, pulls);
        desktop.moveMouse(1, 0); // forgotten with the closing
        desktop.advanceBy(15);
        pressToggleKey();
        pressToggleKey();
        lookAt(inFieldOfFour[0]);
        desktop.advanceBy(15);
        EXPECT_EQ(engineState.gazeDriven, pulls);
        pressToggleKey();
    }
}

TEST_F(WheelTick, ADwellSelectsAfterExactlyItsTimeAlsoWhenTheGazeHasGoneStale) {
    openWithGaze({wheelOf(4)});
    const std::uint64_t start = desktop.clock.now();
    lookAt({294, 100}); // 130 px up: the second tick brings the cursor into field 0
    desktop.advanceTo(start + 15);
    EXPECT_EQ(engineState.cursorY, 185);
    EXPECT_EQ(engineState.dwellTarget, -1) << "in the hole";
    desktop.advanceTo(start + 30);
    EXPECT_EQ(engineState.dwellTarget, 0);
    desktop.advanceTo(start + 480); // long after the sample has gone stale
    EXPECT_EQ(engineState.dwellProgress, 0.5F);
    EXPECT_TRUE(ringIsPainted());
    desktop.advanceTo(start + 929);
    EXPECT_TRUE(OverlayIsWheelVisible());
    desktop.advanceTo(start + 930);
    EXPECT_FALSE(OverlayIsWheelVisible());
    desktop.advanceBy(1000);
    EXPECT_EQ(played(start), "1180 key 65 down, 1240 key 65 up");
}

TEST_F(WheelTick, TheDwellStartsAnewOnAnotherFieldAndEndsAtOneCountOfTheMouse) {
    openWithGaze({wheelOf(4)});
    restAt(inFieldOfFour[0]);
    desktop.advanceBy(615);
    EXPECT_GT(engineState.dwellProgress, 0.6F);
    restAt(inFieldOfFour[1]);
    desktop.advanceBy(15);
    EXPECT_EQ(engineState.dwellTarget, 1);
    EXPECT_EQ(engineState.dwellProgress, 0);
    desktop.advanceBy(899);
    EXPECT_TRUE(ringIsPainted());
    desktop.moveMouse(1, 0); // before the very tick that would select
    desktop.advanceBy(1);
    EXPECT_FALSE(engineState.gazeDriven);
    EXPECT_FALSE(ringIsPainted());
    desktop.advanceBy(5000);
    EXPECT_TRUE(OverlayIsWheelVisible()) << "no dwell without the gaze";
}

TEST_F(WheelTick, AnArrowUnderTheGazePagesAgainAndAgain) {
    openWithGaze({wheelOf(4), wheelOf(4), wheelOf(4)});
    restAt(inRightArrow);
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
    EXPECT_TRUE(OverlayIsWheelVisible());
}

} // namespace
