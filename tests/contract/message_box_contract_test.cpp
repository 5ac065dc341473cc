#include "contract_test.h"
#include "platform/injection.h"
#include "platform/message_box.h"
#include "platform/messages.h"
#include "platform/timer.h"

#include <gtest/gtest.h>

namespace {

using MessageBoxContract = ContractTest;

/// Enter, now and then: the box may not have the keyboard yet.
void pressEnterEveryThirdOfASecond() noexcept {
    countTick();
    if (heard.ticks % 20 == 0) {
        injectKey(0x0D, false, InputMotion::downUntilReleased);
        injectKey(0x0D, false, InputMotion::up);
    }
}

TEST_F(MessageBoxContract, TheWindowsLiveOnBehindAnOpenBoxUntilItIsDismissed) {
    startWindowTimer(wheelWindow(), 15, pressEnterEveryThirdOfASecond);
    ASSERT_TRUE(postWindowMessage(mainWindow(), 0x8003, 1, 2));
    showWarningBox(
        u"Rotika",
        u"Nie udało się zarejestrować globalnego skrótu 'x'.\nByć może inny program już go używa.");
    EXPECT_GE(heard.ticks, 20);
    EXPECT_EQ(heard.byMain, (std::vector<HeardMessage>{{0x8003, 1, 2}}));
}

} // namespace
