// The guard takes what is its own and nothing else: signals have one handler for the whole process.

#include "faults.h"
#include "platform/fault_guard.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <string>
#include <thread>

namespace {

using testing::ExitedWithCode;
using testing::KilledBySignal;

void guardOnce() {
    runGuarded([](void*) {}, nullptr);
}

TEST(LinuxFaultGuardDeathTest, WhatIsNotItsOwnTakesTheEarlierWay) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT((guardOnce(), writeToNowhere(nullptr)), KilledBySignal(SIGSEGV), "");
    EXPECT_EXIT((guardOnce(), divideByZero(nullptr)), KilledBySignal(SIGFPE), "");
    EXPECT_EXIT((guardOnce(), std::abort()), KilledBySignal(SIGABRT), "");
    EXPECT_EXIT((guardOnce(), kill(getpid(), SIGABRT), pause()), KilledBySignal(SIGABRT), "");
    EXPECT_EXIT(runGuarded([](void*) { raise(SIGSEGV); }, nullptr), KilledBySignal(SIGSEGV), "")
        << "a signal that somebody sent";
    EXPECT_EXIT(runGuarded([](void*) { std::thread([] { writeToNowhere(nullptr); }).join(); }, nullptr),
                KilledBySignal(SIGSEGV), "")
        << "another thread's";
    EXPECT_EXIT((signal(SIGSEGV, [](int) { _exit(7); }), guardOnce(), writeToNowhere(nullptr)),
                ExitedWithCode(7), "")
        << "a handler that was there before";
    EXPECT_EXIT((signal(SIGSEGV, SIG_IGN), guardOnce(), raise(SIGSEGV), _exit(8)), ExitedWithCode(8), "");
}

/// An exception that may not leave a function ends in an abort, too. The last one is nobody's and ends the
/// test.
TEST(LinuxFaultGuardDeathTest, AnAbortOnTheGuardedThreadIsSurvivedAThousandTimes) {
    const auto throwWhereNoneMay = [](void*) noexcept { static_cast<void>(std::string().at(1)); };
    EXPECT_EXIT(
        {
            std::set_terminate(std::abort); // without a line for each
            int survived = 0;
            for (int i = 0; i < 1000; ++i)
                survived += (runGuarded([](void*) { std::abort(); }, nullptr) ? 0 : 1) +
                            (runGuarded(throwWhereNoneMay, nullptr) ? 0 : 1);
            survived == 2000 ? std::abort() : _exit(1);
        },
        KilledBySignal(SIGABRT), "");
}

/// Beyond the end of a file, as when one shrinks that a library has mapped. A handler's stack has 16 pages.
TEST(LinuxFaultGuard, ABusErrorIsSurvivedAndThreadsLeaveNoStackOfTheHandlersBehind) {
    const int file = ::memfd_create("empty", MFD_CLOEXEC);
    void* const beyondEnd = ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ASSERT_NE(beyondEnd, MAP_FAILED);
    const auto faultInThread = [=] {
        std::thread([=] {
            EXPECT_FALSE(runGuarded([](void* place) { *static_cast<volatile char*>(place) = 1; }, beyondEnd));
        }).join();
    };
    const auto mappedPages = [] {
        long pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        return pages;
    };
    faultInThread();
    const long before = mappedPages();
    for (int i = 0; i < 500; ++i)
        faultInThread();
    EXPECT_LT(mappedPages() - before, 100L * 16);
    ::munmap(beyondEnd, 4096);
    ::close(file);
}

} // namespace
