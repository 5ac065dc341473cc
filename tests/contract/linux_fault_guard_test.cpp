// The guard takes what is its own and nothing else: signals have one handler for the whole process.

#include "faults.h"
#include "platform/fault_guard.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <string>
#include <thread>

namespace {

void guardOnce() {
    runGuarded([](void*) {}, nullptr);
}

TEST(LinuxFaultGuardDeathTest, WhatIsNotItsOwnTakesTheEarlierWay) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT((guardOnce(), writeToNowhere(nullptr)), testing::KilledBySignal(SIGSEGV), "");
    EXPECT_EXIT((guardOnce(), divideByZero(nullptr)), testing::KilledBySignal(SIGFPE), "");
    EXPECT_EXIT(runGuarded([](void*) { raise(SIGSEGV); }, nullptr), testing::KilledBySignal(SIGSEGV), "")
        << "a signal that somebody sent";
    EXPECT_EXIT((guardOnce(), std::abort()), testing::KilledBySignal(SIGABRT), "");
    EXPECT_EXIT(runGuarded([](void*) { std::thread([] { writeToNowhere(nullptr); }).join(); }, nullptr),
                testing::KilledBySignal(SIGSEGV), "")
        << "another thread's";
    EXPECT_EXIT(runGuarded([](void*) { std::thread([] { std::abort(); }).join(); }, nullptr),
                testing::KilledBySignal(SIGABRT), "");
    EXPECT_EXIT((guardOnce(), kill(getpid(), SIGABRT), pause()), testing::KilledBySignal(SIGABRT), "");
    EXPECT_EXIT((signal(SIGSEGV, [](int) { _exit(7); }), guardOnce(), writeToNowhere(nullptr)),
                testing::ExitedWithCode(7), "")
        << "a handler that was there before";
    EXPECT_EXIT((signal(SIGSEGV, SIG_IGN), guardOnce(), raise(SIGSEGV), _exit(8)), testing::ExitedWithCode(8),
                "");
}

/// An exception that may not leave a function ends in an abort, too. The last one is nobody's and ends the
/// test.
TEST(LinuxFaultGuardDeathTest, AnAbortOnTheGuardedThreadIsSurvivedAThousandTimes) {
    const auto throwWhereNoneMay = [](void*) noexcept { static_cast<void>(std::string().at(1)); };
    EXPECT_EXIT(
        {
            std::set_terminate(std::abort); // without a line for each
            int survived = 0;
            for (int i = 0; i < 1000; ++i) {
                survived += runGuarded([](void*) { std::abort(); }, nullptr) ? 0 : 1;
                survived += runGuarded(throwWhereNoneMay, nullptr) ? 0 : 1;
            }
            survived == 2000 ? std::abort() : _exit(1);
        },
        testing::KilledBySignal(SIGABRT), "");
}

/// As when a file shrinks that a library has mapped.
TEST(LinuxFaultGuard, ABusErrorIsSurvived) {
    const int file = ::memfd_create("empty", MFD_CLOEXEC);
    const std::size_t page = 4096;
    void* const beyondEnd = ::mmap(nullptr, page, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ASSERT_NE(beyondEnd, MAP_FAILED);
    for (int i = 0; i < 1000; ++i) {
        ASSERT_FALSE(runGuarded([](void* place) { *static_cast<volatile char*>(place) = 1; }, beyondEnd));
    }
    ::munmap(beyondEnd, page);
    ::close(file);
}

TEST(LinuxFaultGuard, ThreadsLeaveNoStackOfTheHandlersBehind) {
    const auto mappedPages = [] {
        long pages = 0;
        std::FILE* const status = std::fopen("/proc/self/statm", "r");
        EXPECT_EQ(std::fscanf(status, "%ld", &pages), 1);
        std::fclose(status);
        return pages;
    };
    const auto faultInThread = [] { std::thread([] { runGuarded(writeToNowhere, nullptr); }).join(); };
    faultInThread();
    const long before = mappedPages();
    for (int i = 0; i < 500; ++i)
        faultInThread();
    EXPECT_LT(mappedPages() - before, 100L * 16) << "a handler's stack has 16 pages";
}

} // namespace
