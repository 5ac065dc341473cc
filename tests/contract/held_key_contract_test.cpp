// Not on Windows: the tests run under Wine there, which sends a held hot key again and again in spite of
// MOD_NOREPEAT.

#include "contract_test.h"
#include "platform/clock.h"
#include "platform/hot_key.h"

#include <gtest/gtest.h>

namespace {

using HeldKeyContract = ContractTest;

constexpr std::uint16_t keyX = 0x58;

TEST_F(HeldKeyContract, AHeldHotKeyDoesNotRepeat) {
    const auto recorder = openRecorder(recorderPlace);
    ASSERT_TRUE(registerHotKey(mainWindow(), 1, keyX));
    pressRealKey(keyX);
    ASSERT_TRUE(pumpUntil([] { return !heard.hotKeys.empty(); }));
    // Auto-repeat begins after 250 to 1000 ms: the time that the key is held is what is tested here.
    const std::uint64_t pressedAt = tickCount();
    EXPECT_TRUE(pumpUntil([&] { return tickCount() - pressedAt >= 1200; }));
    releaseRealKey(keyX);
    EXPECT_EQ(heard.hotKeys, std::vector<int>{1});
    unregisterHotKey(mainWindow(), 1);
}

} // namespace
