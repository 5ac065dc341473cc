#include "engine_test.h"
#include "run/function_run.h"

#include <algorithm>
#include <tuple>

namespace {

class FunctionRun : public EngineTest {
protected:
    static void run(std::vector<ActionStep> steps, std::uint32_t initialDelay = 0, std::int32_t delay = 30) {
        WheelAction action;
        action.steps = std::move(steps);
        action.delay = delay;
        runFunction(action, initialDelay);
    }

    /// Plays what was started to its end.
    std::string playedFrom(std::uint64_t start) {
        desktop.advanceBy(600'000);
        EXPECT_EQ(desktop.clock.workerCount(), 0U);
        const std::string text = played(start);
        desktop.clearJournal();
        return text;
    }
};

TEST_F(FunctionRun, EveryKindOfStepKeepsItsTimes) {
    KeyCode arrow = keyOf(37);
    arrow.extended = true;
    const ActionStep unknownKind{keyOf(70), static_cast<StepKind>(9), 1, {}};
    const std::tuple<std::int32_t, std::vector<ActionStep>, const char*> cases[] = {
        {30, {hold(keyOf(65), 1500), release(keyOf(66))}, "0 key 65 down, 1500 key 65 up, 1530 key 66 up"},
        {30, {hold(keyOf(16), 0), click(keyOf(66))}, "0 key 16 down and left, 30 key 66 down, 90 key 66 up"},
        {30, {hold(keyOf(65), -1)}, "0 key 65 down and left"},
        {0, {click(keyOf(65)), release(keyOf(66))}, "0 key 65 down, 60 key 65 up, 60 key 66 up"},
        {2000, {release(keyOf(65)), release(keyOf(66))}, "0 key 65 up, 2000 key 66 up"},
        {30, {click(keyOf(65), 0)}, "0 key 65 down, 60 key 65 up"},
        {30, {click(keyOf(65), -7)}, "0 key 65 down, 60 key 65 up"},
        {30, {click(KeyCode{}, 2), release(keyOf(66))}, "210 key 66 up"}, // an unknown key takes its time
        {30, {unknownKind, release(keyOf(66))}, "30 key 66 up"},
        {30, {click(arrow)}, "0 extended key 37 down, 60 extended key 37 up"},
        {30,
         {click(keyOf(65), 2), open(u"https://example.org/ą"), release(keyOf(65))},
         "0 key 65 down, 60 key 65 up, 120 key 65 down, 180 key 65 up, 210 open https://example.org/ą, "
         "240 key 65 up"},
    };
    for (const auto& [delay, steps, expected] : cases) {
        const std::uint64_t start = desktop.clock.now();
        run(steps, 0, delay);
        EXPECT_TRUE(desktop.journal.empty()) << "the owner thread played it itself";
        EXPECT_EQ(playedFrom(start), expected);
    }
}

TEST_F(FunctionRun, BehindALockedScreenNothingIsPressedOrOpenedAndWhatIsDownIsReleased) {
    const std::uint64_t start = desktop.clock.now();
    run({hold(keyOf(65), 1000), click(keyOf(66)), hold(mouseKey(0), 0), open(u"https://example.org")});
    desktop.advanceBy(500);
    engineState.sessionLocked = true;
    startMouseClick(0, 2);
    EXPECT_EQ(playedFrom(start), "0 key 65 down, 1000 key 65 up, 1090 key 66 up");
}

TEST_F(FunctionRun, SwappedButtonsExchangeOnlyLeftAndRightLookedUpForEachEvent) {
    for (const bool isSwapped : {false, true}) {
        for (std::uint32_t button = 0; button < 5; ++button) {
            desktop.buttonsAreSwapped = isSwapped;
            const std::uint64_t start = desktop.clock.now();
            run({click(mouseKey(button))});
            const std::string device =
                "button " + std::to_string(isSwapped && button < 2 ? 1 - button : button);
            EXPECT_EQ(playedFrom(start), "0 " + device + " down, 60 " + device + " up");
        }
    }
    const std::uint64_t start = desktop.clock.now();
    startMouseClick(0, 2);
    desktop.advanceBy(130);
    desktop.buttonsAreSwapped = false;
    EXPECT_EQ(playedFrom(start), "60 button 1 down, 120 button 1 up, 180 button 0 down, 240 button 0 up");
    startMouseClick(0, 0);
    EXPECT_EQ(playedFrom(0), "");
}

TEST_F(FunctionRun, AChangedKeyHoldCountsFromTheNextWaitOn) {
    run({click(keyOf(65), 3)});
    desktop.advanceTo(70); // in the first gap
    engineConfig.keyHold = 200;
    desktop.advanceTo(330);
    engineConfig.keyHold = 0;
    EXPECT_EQ(playedFrom(0), "0 key 65 down, 60 key 65 up, 120 key 65 down, 320 key 65 up, "
                             "520 key 65 down, 520 key 65 up");
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
    EXPECT_EQ(journal({JournalKind::input}), "key 67 down, key 67 up");
}

TEST_F(FunctionRun, StopWaitsForNoRunAndLetsGoOfNoHeldKey) {
    startWith({wheelOf(4)});
    run({hold(keyOf(16), 0), hold(mouseKey(0), 0), hold(keyOf(65), 60'000)});
    desktop.advanceBy(200);
    pressToggleKey();
    OverlayEngineStop();
    EXPECT_EQ(desktop.keysDown, (std::set<std::uint16_t>{16, 65}));
    desktop.advanceBy(60'000);
    EXPECT_EQ(desktop.keysDown, (std::set<std::uint16_t>{16}));
    EXPECT_EQ(desktop.buttonsDown, (std::set<std::uint32_t>{0}));
    run({release(keyOf(16)), release(mouseKey(0))});
    desktop.advanceBy(100);
    EXPECT_TRUE(desktop.keysDown.empty());
    EXPECT_TRUE(desktop.buttonsDown.empty());
}

TEST_F(FunctionRun, ManyRunsAtOnceShareNothingButTheSettings) {
    startWith({wheelOf(4)});
    desktop.clock.runWorkersFreely();
    constexpr int runCount = 20;
    for (int i = 0; i < runCount; ++i) {
        runFunction(engineState.wheels[0].actions[1], 5);
        startMouseClick(1, 1);
        engineConfig.keyHold = i;
        OverlayReloadConfig();
        engineState.wheels = {wheelOf(4)};
    }
    desktop.clock.drain();
    const auto texts = desktop.journalOf({JournalKind::input});
    for (const char* text : {"key 66 down", "key 66 up", "button 1 down", "button 1 up"})
        EXPECT_EQ(std::ranges::count(texts, text), runCount) << text;
}

} // namespace
