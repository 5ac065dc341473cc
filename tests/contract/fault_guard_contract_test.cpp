// The guard survives the faults of what runs under it and leaves every other one alone.

#include "platform/fault_guard.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <thread>
#ifdef __linux__
#include <sys/mman.h>
#include <unistd.h>

#include <fstream>
#endif

namespace {

// Faults as a library would make them. They hide from sanitizers, which would report them before the system
// does.
#define ROTIKA_UNCHECKED __attribute__((noinline, no_sanitize("address", "undefined")))

ROTIKA_UNCHECKED void writeToNowhere(void* context) {
    void* volatile nowhere = context;
    *static_cast<volatile int*>(nowhere) = 1;
}

ROTIKA_UNCHECKED void jumpToNowhere(void*) {
    void (*volatile nowhere)() = nullptr;
    nowhere();
}

ROTIKA_UNCHECKED void divideByZero(void*) {
    volatile int divisor = 0;
    volatile int quotient = 1;
    quotient = quotient / divisor;
}

ROTIKA_UNCHECKED void runIllegalInstruction(void*) {
    __builtin_trap();
}

volatile bool isBottomless = true;

/// In steps below a page's size, as the guard page of a stack asks for.
ROTIKA_UNCHECKED int deepen(volatile const char* above) {
    volatile char room[3000];
    room[0] = static_cast<char>(*above + 1);
    return isBottomless ? deepen(room) + room[0] : 0;
}

ROTIKA_UNCHECKED void useUpStack(void*) {
    const volatile char top = 0;
    deepen(&top);
}

void throwOut(void*) {
    throw std::runtime_error("nobody catches it");
}

/// Whether `body` is survived, and its fault told, so many times.
bool isSurvived(void (*body)(void*), int times, void* context = nullptr) {
    int survived = 0;
    for (int i = 0; i < times; ++i)
        survived += runGuarded(body, context) ? 0 : 1;
    return survived == times;
}

TEST(FaultGuardContract, EveryKindOfFaultIsSurvivedAThousandTimesAlsoSideBySide) {
    for (const auto fault : {writeToNowhere, jumpToNowhere, divideByZero, runIllegalInstruction, throwOut}) {
        bool isOtherSurvived = false;
        std::thread other([&] { isOtherSurvived = isSurvived(useUpStack, 200); });
        EXPECT_TRUE(isSurvived(fault, 1000));
        other.join();
        EXPECT_TRUE(isOtherSurvived);
    }
}

/// The inner guard takes the inner fault alone, and leaves the outer one in force.
TEST(FaultGuardContract, GuardsNestAndABodyThatReturnsHasDoneItsWork) {
    static int answer = 0;
    EXPECT_FALSE(runGuarded(
        [](void*) {
            EXPECT_FALSE(runGuarded(useUpStack, nullptr));
            EXPECT_TRUE(runGuarded([](void*) { answer = 42; }, nullptr));
            try {
                throw std::runtime_error("caught where it belongs");
            } catch (const std::runtime_error&) {
            }
            writeToNowhere(nullptr);
        },
        nullptr));
    EXPECT_EQ(answer, 42);
}

#ifdef __linux__ // Signals have one handler for the whole process.

using testing::KilledBySignal;

TEST(LinuxFaultGuardDeathTest, WhatIsNotItsOwnTakesTheEarlierWay) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_TRUE(runGuarded([](void*) {}, nullptr));
    EXPECT_EXIT((isSurvived(throwOut, 1), writeToNowhere(nullptr)), KilledBySignal(SIGSEGV), "");
    EXPECT_EXIT((isSurvived(throwOut, 1), divideByZero(nullptr)), KilledBySignal(SIGFPE), "");
    EXPECT_EXIT((isSurvived(throwOut, 1), kill(getpid(), SIGABRT), pause()), KilledBySignal(SIGABRT), "");
    EXPECT_EXIT(runGuarded([](void*) { raise(SIGSEGV); }, nullptr), KilledBySignal(SIGSEGV), "");
    EXPECT_EXIT(runGuarded([](void*) { std::thread(writeToNowhere, nullptr).join(); }, nullptr),
                KilledBySignal(SIGSEGV), "")
        << "another thread's";
    EXPECT_EXIT((signal(SIGSEGV, [](int) { _exit(7); }), isSurvived(throwOut, 1), writeToNowhere(nullptr)),
                testing::ExitedWithCode(7), "")
        << "a handler that was there before";
    EXPECT_EXIT((signal(SIGSEGV, SIG_IGN), isSurvived(throwOut, 1), raise(SIGSEGV), _exit(8)),
                testing::ExitedWithCode(8), "");
}

/// An exception that may not leave a function ends in an abort, too. The last one is nobody's.
TEST(LinuxFaultGuardDeathTest, AnAbortOnTheGuardedThreadIsSurvivedAThousandTimes) {
    EXPECT_EXIT((std::set_terminate(std::abort), // without a line for each
                 isSurvived([](void*) { std::abort(); }, 1000) &&
                         isSurvived([](void*) noexcept { throwOut(nullptr); }, 1000)
                     ? std::abort()
                     : _exit(1)),
                KilledBySignal(SIGABRT), "");
}

/// Beyond the end of a file, as when one shrinks that a library has mapped. A handler's stack has 16 pages.
TEST(LinuxFaultGuard, ABusErrorIsSurvivedAndThreadsLeaveNoStackOfTheHandlersBehind) {
    const int file = memfd_create("empty", MFD_CLOEXEC);
    void* const beyondEnd = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ASSERT_NE(beyondEnd, MAP_FAILED);
    const auto pagesAfter = [beyondEnd](int threads) {
        for (int i = 0; i < threads; ++i)
            std::thread([=] { EXPECT_TRUE(isSurvived(writeToNowhere, 1, beyondEnd)); }).join();
        long pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        return pages;
    };
    const long before = pagesAfter(1);
    EXPECT_LT(pagesAfter(500) - before, 100L * 16);
    munmap(beyondEnd, 4096);
    close(file);
}

#endif

} // namespace
