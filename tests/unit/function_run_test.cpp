#include "engine_test.h"
#include "overlay.h"
#include "run/function_run.h"

#include <algorithm>

namespace {

using Played = std::vector<TimedText>;

class FunctionRun : public EngineTest {
protected:
    /// Plays one function without a wait before it, to its end.
    Played playedAlone(std::vector<ActionStep> steps, std::int32_t delay = 30) {
        const std::uint64_t start = desktop.clock.now();
        desktop.clearJournal();
        WheelAction action;
        action.steps = std::move(steps);
        action.delay = delay;
        runFunction(action, 0);
        EXPECT_TRUE(desktop.journal.empty()) << "the owner thread played it itself";
        desktop.advanceBy(600'000);
        EXPECT_EQ(desktop.clock.workerCount(), 0U);
        return played(start);
    }
};

TEST_F(FunctionRun, AFieldOfTwoClicksAndAnOpenIsPlayedToTheMillisecond) {
    startWith({wheelOf(4)});
    engineState.wheels[0].actions[0].steps = {click(keyOf(65), 2), open(u"https://example.org/ą")};
    pressToggleKey();
    aimAt(inFieldOfFour[0]);
    const std::uint64_t start = desktop.clock.now();
    clickMouse();
    EXPECT_FALSE(OverlayIsWheelVisible());
    desktop.advanceTo(start + 249);
    EXPECT_TRUE(played().empty());
    desktop.advanceTo(start + 459);
    EXPECT_EQ(played(start),
              (Played{{250, "key 65 down"}, {310, "key 65 up"}, {370, "key 65 down"}, {430, "key 65 up"}}));
    desktop.advanceTo(start + 460);
    EXPECT_EQ(played(start).back(), (TimedText{460, "open https://example.org/ą"}));
    EXPECT_EQ(desktop.clock.workerCount(), 0U);
}

TEST_F(FunctionRun, EveryKindOfStepKeepsItsTimes) {
    struct StepsCase {
        const char* what;
        std::vector<ActionStep> steps;
        std::int32_t delay;
        Played expected;
    };
    KeyCode arrow = keyOf(37);
    arrow.extended = true;
    const ActionStep unknownKind{keyOf(70), static_cast<StepKind>(9), 1, {}};
    const StepsCase cases[] = {
        {"a hold that ends, then a click from its release on",
         {hold(keyOf(65), 1500), click(keyOf(66))},
         30,
         {{0, "key 65 down"}, {1500, "key 65 up"}, {1530, "key 66 down"}, {1590, "key 66 up"}}},
        {"a hold of a minute", {hold(keyOf(65), 60'000)}, 30, {{0, "key 65 down"}, {60'000, "key 65 up"}}},
        {"a hold without end leaves the key down and goes on",
         {hold(keyOf(16), 0), click(keyOf(66))},
         30,
         {{0, "key 16 down and left"}, {30, "key 66 down"}, {90, "key 66 up"}}},
        {"a release alone", {release(keyOf(16))}, 30, {{0, "key 16 up"}}},
        {"no pause between steps",
         {click(keyOf(65)), click(keyOf(66))},
         0,
         {{0, "key 65 down"}, {60, "key 65 up"}, {60, "key 66 down"}, {120, "key 66 up"}}},
        {"a long pause is not before the first step",
         {release(keyOf(65)), release(keyOf(66))},
         2000,
         {{0, "key 65 up"}, {2000, "key 66 up"}}},
        {"click counts of zero and less click once",
         {click(keyOf(65), 0), click(keyOf(66), -7)},
         30,
         {{0, "key 65 down"}, {60, "key 65 up"}, {90, "key 66 down"}, {150, "key 66 up"}}},
        {"a negative hold is one without end", {hold(keyOf(65), -1)}, 30, {{0, "key 65 down and left"}}},
        {"an unknown key is silent but takes its time",
         {click(KeyCode{}, 2), release(keyOf(66))},
         30,
         {{210, "key 66 up"}}},
        {"an unknown kind does nothing", {unknownKind, release(keyOf(66))}, 30, {{30, "key 66 up"}}},
        {"the extended block", {click(arrow)}, 30, {{0, "extended key 37 down"}, {60, "extended key 37 up"}}},
        {"opening waits for nothing and goes on",
         {open(u"brak.exe"), open(u"notes.txt"), click(keyOf(65))},
         30,
         {{0, "open brak.exe"}, {30, "open notes.txt"}, {60, "key 65 down"}, {120, "key 65 up"}}},
    };
    for (const StepsCase& c : cases)
        EXPECT_EQ(playedAlone(c.steps, c.delay), c.expected) << c.what;
}

TEST_F(FunctionRun, WithoutAnyWaitPressAndReleaseFollowInOrder) {
    engineConfig.keyHold = 0;
    EXPECT_EQ(playedAlone({click(keyOf(65), 2), click(mouseKey(2))}, 0), (Played{{0, "key 65 down"},
                                                                                 {0, "key 65 up"},
                                                                                 {0, "key 65 down"},
                                                                                 {0, "key 65 up"},
                                                                                 {0, "button 2 down"},
                                                                                 {0, "button 2 up"}}));
}

TEST_F(FunctionRun, SwappedButtonsExchangeOnlyLeftAndRight) {
    struct ButtonCase {
        std::uint32_t button;
        bool isSwapped;
        std::string device;
    };
    const ButtonCase cases[] = {
        {0, false, "0"}, {1, false, "1"}, {2, false, "2"}, {3, false, "3"}, {4, false, "4"},
        {0, true, "1"},  {1, true, "0"},  {2, true, "2"},  {3, true, "3"},  {4, true, "4"},
    };
    for (const ButtonCase& c : cases) {
        desktop.buttonsAreSwapped = c.isSwapped;
        const Played expected{{0, "button " + c.device + " down"}, {60, "button " + c.device + " up"}};
        EXPECT_EQ(playedAlone({click(mouseKey(c.button))}), expected);

        desktop.clearJournal();
        const std::uint64_t start = desktop.clock.now();
        startMouseClick(c.button, 1);
        desktop.advanceBy(200);
        const Played pointing{{60, expected[0].text}, {120, expected[1].text}};
        EXPECT_EQ(played(start), pointing);
    }
}

TEST_F(FunctionRun, TheSwapIsLookedUpForEachEvent) {
    startMouseClick(0, 2);
    desktop.advanceBy(130);
    desktop.buttonsAreSwapped = true;
    desktop.advanceBy(1000);
    EXPECT_EQ(
        played(),
        (Played{{60, "button 0 down"}, {120, "button 0 up"}, {180, "button 1 down"}, {240, "button 1 up"}}));
}

TEST_F(FunctionRun, AChangedKeyHoldCountsFromTheNextWaitOn) {
    WheelAction action;
    action.steps = {click(keyOf(65), 3)};
    runFunction(action, 0);
    desktop.advanceTo(70); // in the first gap
    engineConfig.keyHold = 200;
    desktop.advanceTo(330);
    engineConfig.keyHold = 0;
    desktop.advanceTo(1000);
    EXPECT_EQ(played(), (Played{{0, "key 65 down"},
                                {60, "key 65 up"},
                                {120, "key 65 down"},
                                {320, "key 65 up"},
                                {520, "key 65 down"},
                                {520, "key 65 up"}}));
}

TEST_F(FunctionRun, TwoRunsPlaySideBySide) {
    WheelAction first;
    first.steps = {click(keyOf(65), 2)};
    WheelAction second;
    second.steps = {hold(keyOf(66), 100)};
    runFunction(first, 250);
    desktop.advanceTo(60);
    runFunction(second, 250);
    runFunction(second, 250); // the same moment: in the order of their start
    desktop.advanceTo(1000);
    EXPECT_EQ(played(), (Played{{250, "key 65 down"},
                                {310, "key 65 up"},
                                {310, "key 66 down"},
                                {310, "key 66 down"},
                                {370, "key 65 down"},
                                {410, "key 66 up"},
                                {410, "key 66 up"},
                                {430, "key 65 up"}}));
}

TEST_F(FunctionRun, PlaysItsOwnCopyWhateverBecomesOfTheWheels) {
    startWith({wheelOf(4)});
    pressToggleKey();
    aimAt(inFieldOfFour[2]);
    clickMouse();
    engineState.wheels[0].actions[2] = field({}, 90);
    desktop.advanceBy(100);
    OverlayReloadConfig();
    engineState.wheels.clear();
    desktop.advanceBy(1000);
    EXPECT_EQ(desktop.journalOf({JournalKind::input}),
              (std::vector<std::string>{"key 67 down", "key 67 up"}));
}

TEST_F(FunctionRun, AHeldKeyStaysDownThroughStopUntilAnotherFunctionReleasesIt) {
    startWith({wheelOf(4)});
    playedAlone({hold(keyOf(16), 0), hold(mouseKey(0), 0)});
    pressToggleKey();
    OverlayEngineStop();
    EXPECT_EQ(desktop.keysDown, (std::set<std::uint16_t>{16}));
    EXPECT_EQ(desktop.buttonsDown, (std::set<std::uint32_t>{0}));
    playedAlone({release(keyOf(16)), release(mouseKey(0))});
    EXPECT_TRUE(desktop.keysDown.empty());
    EXPECT_TRUE(desktop.buttonsDown.empty());
}

TEST_F(FunctionRun, PointingClicksWaitSixtyMillisecondsAndRepeatWithKeyHold) {
    struct ClickCase {
        std::int32_t count;
        Played expected;
    };
    const ClickCase cases[] = {
        {1, {{60, "button 0 down"}, {120, "button 0 up"}}},
        {2, {{60, "button 0 down"}, {120, "button 0 up"}, {180, "button 0 down"}, {240, "button 0 up"}}},
        {0, {}},
        {-1, {}},
    };
    for (const ClickCase& c : cases) {
        desktop.clearJournal();
        const std::uint64_t start = desktop.clock.now();
        startMouseClick(0, c.count);
        desktop.advanceBy(59);
        EXPECT_EQ(desktop.clock.workerCount(), 1U);
        desktop.advanceBy(400);
        EXPECT_EQ(played(start), c.expected) << c.count;
        EXPECT_EQ(desktop.clock.workerCount(), 0U);
    }
}

TEST_F(FunctionRun, APointingClickTakesTheGridAwayButNotTheLabels) {
    startWith({wheelOf(4)});
    showOverlayWindow(engineState.gridWindow);
    engineState.gridVisible = true;
    engineState.elementsVisible = true;
    startMouseClick(0, 1);
    EXPECT_FALSE(engineState.gridVisible);
    EXPECT_TRUE(engineState.elementsVisible);
    EXPECT_FALSE(desktop.windowNamed("grid")->isShown);
    showOverlayWindow(engineState.gridWindow); // now it holds the labels alone
    startMouseClick(0, 1);
    EXPECT_TRUE(desktop.windowNamed("grid")->isShown);
}

TEST_F(FunctionRun, ManyRunsAtOnceShareNothingButTheSettings) {
    startWith({wheelOf(4)});
    desktop.clock.runWorkersFreely();
    constexpr int runCount = 20;
    for (int i = 0; i < runCount; ++i) {
        runFunction(engineState.wheels[0].actions[1], 5);
        startMouseClick(1, 1);
        engineConfig.keyHold = i;
        engineState.wheels = {wheelOf(4)};
        OverlayReloadConfig();
        engineState.wheels = {wheelOf(4)};
    }
    desktop.clock.drain();
    const auto texts = desktop.journalOf({JournalKind::input});
    for (const char* text : {"key 66 down", "key 66 up", "button 1 down", "button 1 up"})
        EXPECT_EQ(std::ranges::count(texts, text), runCount) << text;
}

} // namespace
