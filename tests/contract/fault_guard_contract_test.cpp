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
    for (int i = 0; i < times; ++i) {
        survived += runGuarded(body, nullptr) ? 0 : 1;
    }
    return survived == times;
}

TEST(FaultGuardContract, EveryKindOfFaultIsSurvivedAThousandTimes) {
    struct Case {
        const char* name;
        void (*body)(void*);
    };
    for (const auto& [name, body] :
         {Case{"a write to nowhere", writeToNowhere}, Case{"a jump to nowhere", jumpToNowhere},
          Case{"a division by zero", divideByZero}, Case{"an illegal instruction", runIllegalInstruction},
          Case{"a stack overflow", useUpStack}, Case{"an exception", throwOut}}) {
        EXPECT_TRUE(isSurvived(body, 1000)) << name;
    }
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
    struct Outcome {
        bool innerReturned = false;
        bool innerFaulted = false;
    } outcome;
    EXPECT_FALSE(runGuarded(
        [](void* context) {
            auto& seen = *static_cast<Outcome*>(context);
            seen.innerFaulted = !runGuarded(useUpStack, nullptr);
            seen.innerReturned = runGuarded([](void*) {}, nullptr);
            writeToNowhere(nullptr);
        },
        &outcome));
    EXPECT_TRUE(outcome.innerFaulted);
    EXPECT_TRUE(outcome.innerReturned);
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
