// Messages, timers, time and threads.

#include "contract_test.h"
#include "platform/clock.h"
#include "platform/messages.h"
#include "platform/threads.h"
#include "platform/timer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>

namespace {

using LoopContract = ContractTest;

constexpr std::uint32_t firstMessage = 0x8003;

TEST_F(LoopContract, MessagesArriveWholeAndInOrderAtTheirWindow) {
    constexpr std::uintptr_t large = std::numeric_limits<std::uintptr_t>::max();
    const std::vector<HeardMessage> sent{
        {firstMessage, 1, -1}, {firstMessage + 1, large, 0}, {firstMessage, 0, 7}};
    for (const HeardMessage& message : sent)
        ASSERT_TRUE(postWindowMessage(mainWindow(), message.message, message.wParam, message.lParam));
    ASSERT_TRUE(postWindowMessage(wheelWindow(), 0x8002));
    EXPECT_FALSE(postWindowMessage(nullptr, firstMessage));
    EXPECT_TRUE(heard.byMain.empty()) << "delivered by the post itself";

    EXPECT_TRUE(pumpUntil([&] { return heard.byMain.size() == sent.size() && heard.byWheel.size() == 1; }));
    EXPECT_EQ(heard.byMain, sent);
    EXPECT_EQ(heard.byWheel, (std::vector<HeardMessage>{{0x8002, 0, 0}}));
}

TEST_F(LoopContract, MessagesOfEachThreadKeepTheirOrder) {
    constexpr std::uintptr_t senders = 3;
    constexpr std::intptr_t perSender = 200;
    for (std::uintptr_t sender = 0; sender < senders; ++sender) {
        ASSERT_TRUE(startDetachedThread([sender, window = mainWindow()] {
            for (std::intptr_t i = 0; i < perSender; ++i)
                postWindowMessage(window, firstMessage, sender, i);
        }));
    }
    ASSERT_TRUE(pumpUntil([&] { return heard.byMain.size() == senders * perSender; })) << heard.byMain.size();
    std::vector<std::intptr_t> next(senders, 0);
    for (const HeardMessage& message : heard.byMain) {
        ASSERT_LT(message.wParam, senders);
        EXPECT_EQ(message.lParam, next[message.wParam]++);
    }
}

TEST_F(LoopContract, TimerTicksUntilStopped) {
    startWindowTimer(wheelWindow(), 15, countTick);
    EXPECT_TRUE(pumpUntil([] { return heard.ticks >= 4; }));
    stopWindowTimer(wheelWindow());
    const int atStop = heard.ticks;

    const std::uint64_t stoppedAt = tickCount();
    ASSERT_TRUE(pumpUntil([&] { return tickCount() - stoppedAt >= 90; }));
    EXPECT_EQ(heard.ticks, atStop);

    startWindowTimer(wheelWindow(), 15, countTick);
    EXPECT_TRUE(pumpUntil([&] { return heard.ticks > atStop; }));
}

TEST_F(LoopContract, TicksKeepToThePeriodOfTheLastStart) {
    startWindowTimer(wheelWindow(), 15, countTick);
    startWindowTimer(wheelWindow(), 60, countTick);
    const std::uint64_t startedAt = watchMs();
    ASSERT_TRUE(pumpUntil([] { return heard.ticks >= 3; }));
    EXPECT_GE(watchMs() - startedAt, 140U); // three periods, less the coarseness of both clocks
}

TEST_F(LoopContract, SleepLastsAndTicksNeverRunBack) {
    static std::atomic<std::uint64_t> sleptMs;
    static std::atomic<bool> ended;
    sleptMs = 0;
    ended = false;
    ASSERT_TRUE(startDetachedThread([] {
        const std::uint64_t before = watchMs();
        sleepMs(100);
        sleptMs = watchMs() - before;
        ended = true;
    }));
    std::uint64_t last = tickCount();
    ASSERT_TRUE(pumpUntil([&] {
        const std::uint64_t now = tickCount();
        EXPECT_GE(now, last);
        last = now;
        return ended.load();
    }));
    EXPECT_GE(sleptMs, 80U); // Windows may wake a sleeper up to one of its 16 ms steps early
    EXPECT_LE(sleptMs, 5000U);
}

} // namespace
