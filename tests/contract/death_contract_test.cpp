// What the system gets back when a program that holds it is killed.

#include "contract_test.h"
#include "other_process.h"
#include "platform/focus.h"
#include "platform/injection.h"
#include "platform/pointer.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using DeathContract = ContractTest;

TEST_F(DeathContract, AKilledProgramLeavesNoKeyOrButtonOfAClickDown) {
    const auto recorder = openRecorder(recorderPlace);
    setCursorPosition({300, 250});
    auto victim = std::make_unique<OtherProcess>(std::vector<std::string>{"hold-input"});
    ASSERT_TRUE(victim->tells("ready"));
    // A window manager may hold a button back for a moment, so the order of buttons and keys is open.
    for (const char* const event :
         {"key 65 down", "key 39 down", "button 1 down", "key 67 up", "key 66 down"}) {
        EXPECT_TRUE(pumpUntil([&] { return contains(recorder->events(), event); })) << event;
    }
    EXPECT_EQ(recorder->events().size(), 6U) << "nothing is let go while the program lives";

    victim.reset();
    EXPECT_TRUE(pumpUntil([&] {
        const auto events = recorder->events();
        return contains(events, "key 65 up") && contains(events, "key 39 up") &&
               contains(events, "button 1 up");
    }));
    EXPECT_FALSE(contains(recorder->events(), "key 66 up")) << "left down on purpose";
    EXPECT_EQ(std::ranges::count(recorder->events(), "key 67 up"), 1) << "let go before the death";
    injectKey(0x42, false, InputMotion::up);
    EXPECT_TRUE(pumpUntil([&] { return contains(recorder->events(), "key 66 up"); }));
}

TEST_F(DeathContract, AWindowThatDiedMeanwhileCanBeNamed) {
    auto recorder = openRecorder(recorderPlace);
    const WindowHandle window = recorder->window();
    recorder.reset();
    bringToForeground(window);
    EXPECT_TRUE(pumpUntil([&] { return foregroundWindow() != window; }));
}

} // namespace
