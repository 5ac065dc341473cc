#include "faults.h"
#include "platform/fault_guard.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

namespace {

void throwOut(void*) {
    throw std::runtime_error("nobody catches it");
}

/// Whether `body` is survived, and its fault told, so many times.
bool isSurvived(void (*body)(void*), int times) {
    int survived = 0;
    for (int i = 0; i < times; ++i)
        survived += runGuarded(body, nullptr) ? 0 : 1;
    return survived == times;
}

TEST(FaultGuardContract, EveryKindOfFaultIsSurvivedAThousandTimes) {
    EXPECT_TRUE(isSurvived(writeToNowhere, 1000));
    EXPECT_TRUE(isSurvived(jumpToNowhere, 1000));
    EXPECT_TRUE(isSurvived(divideByZero, 1000));
    EXPECT_TRUE(isSurvived(runIllegalInstruction, 1000));
    EXPECT_TRUE(isSurvived(useUpStack, 1000));
    EXPECT_TRUE(isSurvived(throwOut, 1000));
}

TEST(FaultGuardContract, ABodyThatReturnsHasDoneItsWork) {
    int answer = 0;
    EXPECT_TRUE(runGuarded([](void* context) { *static_cast<int*>(context) = 42; }, &answer));
    EXPECT_EQ(answer, 42);
    EXPECT_TRUE(runGuarded(
        [](void*) {
            try {
                throw std::runtime_error("caught where it belongs");
            } catch (const std::runtime_error&) {
            }
        },
        nullptr));
}

/// The inner guard takes the inner fault alone, and leaves the outer one in force.
TEST(FaultGuardContract, GuardsNest) {
    EXPECT_FALSE(runGuarded(
        [](void*) {
            EXPECT_FALSE(runGuarded(useUpStack, nullptr));
            EXPECT_TRUE(runGuarded([](void*) {}, nullptr));
            writeToNowhere(nullptr);
        },
        nullptr));
}

TEST(FaultGuardContract, ThreadsFaultSideBySide) {
    bool survived[2] = {};
    std::thread writer([&] { survived[0] = isSurvived(writeToNowhere, 2000); });
    std::thread recursion([&] { survived[1] = isSurvived(useUpStack, 500); });
    writer.join();
    recursion.join();
    EXPECT_TRUE(survived[0] && survived[1]);
}

} // namespace
