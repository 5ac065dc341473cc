// The guard survives faults of the guarded code and does not affect any others.

#include "platform/fault_guard.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>
#ifdef __linux__
#include <sys/mman.h>
#include <unistd.h>
#endif

using namespace rotika;

namespace {

// Faults as in a library; not instrumented, since sanitizers would report them first.
#define ROTIKA_UNCHECKED __attribute__((noinline, no_sanitize("address", "undefined")))

ROTIKA_UNCHECKED void writeTo(void* context) {
    void* volatile place = context;
    *static_cast<volatile int*>(place) = 1;
}

ROTIKA_UNCHECKED void jumpToNowhere(void*) {
    void (*volatile nowhere)() = nullptr;
    nowhere();
}

volatile bool isEndless = true;

/// In steps below the page size, so that the stack's guard page is hit.
ROTIKA_UNCHECKED int deepen(volatile const char* above) {
    volatile char room[3000];
    room[0] = static_cast<char>(*above + 1);
    return isEndless ? deepen(room) + room[0] : 0;
}

ROTIKA_UNCHECKED void useUpStack(void*) {
    const volatile char top = 0;
    deepen(&top);
}

void throwOut(void*) {
    throw std::runtime_error("nobody catches it");
}

/// Whether every one of `times` runs is survived and reported as a fault.
bool isSurvived(void (*body)(void*), int times = 1, void* context = nullptr) {
    int survived = 0;
    for (int i = 0; i < times; ++i)
        survived += runGuarded(body, context) ? 0 : 1;
    return survived == times;
}

TEST(FaultGuardContract, EveryKindOfFaultIsSurvivedRepeatedlyAndOnTwoThreads) {
    for (const auto fault : {writeTo, jumpToNowhere, throwOut}) {
        bool isOtherSurvived = false;
        std::thread other([&] { isOtherSurvived = isSurvived(useUpStack, 200); });
        EXPECT_TRUE(isSurvived(fault, 1000));
        other.join();
        EXPECT_TRUE(isOtherSurvived);
    }
    EXPECT_TRUE(runGuarded([](void*) {}, nullptr));
}

#ifdef __linux__ // Signals have one handler for the whole process.

using testing::KilledBySignal;

TEST(LinuxFaultGuardDeathTest, OtherFaultsReachTheEarlierHandler) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT((isSurvived(throwOut), writeTo(nullptr)), KilledBySignal(SIGSEGV), "");
    EXPECT_EXIT((isSurvived(throwOut), kill(getpid(), SIGABRT), pause()), KilledBySignal(SIGABRT), "");
    EXPECT_EXIT(runGuarded([](void*) { std::thread(writeTo, nullptr).join(); }, nullptr),
                KilledBySignal(SIGSEGV), "");
    EXPECT_EXIT((signal(SIGSEGV, [](int) { _exit(7); }), isSurvived(throwOut), writeTo(nullptr)),
                testing::ExitedWithCode(7), "");
}

/// SIGBUS: an access beyond the end of a file, as when a file that a library has mapped shrinks.
TEST(LinuxFaultGuard, ABusErrorAndAnAbortAreSurvived) {
    const int file = memfd_create("empty", MFD_CLOEXEC);
    void* const beyondEnd = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ASSERT_NE(beyondEnd, MAP_FAILED);
    EXPECT_TRUE(isSurvived(writeTo, 1000, beyondEnd));
    EXPECT_TRUE(isSurvived([](void*) { std::abort(); }, 1000));
    munmap(beyondEnd, 4096);
    close(file);
}

#endif

} // namespace
