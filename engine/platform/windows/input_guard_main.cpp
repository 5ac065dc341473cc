// The guard: a process of its own that lets go of the keys and buttons that the program held when it was
// killed, and of the cursor; of the cursor also when the program pins it and stops answering, and then ends a
// program that has stopped for good. It ends with the program.

#include "platform/input_guard_protocol.h"
#include "platform/pointer_capture.h"

#include "platform/windows/cursor_pin.h"
#include "platform/windows/handles.h"
#include "platform/windows/held_things.h"
#include "platform/windows/input_sending.h"
#include "platform/windows/windows_api.h"

#include <algorithm>
#include <cstddef>
#include <vector>

using namespace rotika;

namespace {

/// Keys and buttons until they are up: there may be no desktop that takes their release just now.
void letGoOfAll(const HeldThings& held) {
    std::vector<GuardRecord> things = held.all();
    if (std::ranges::any_of(things, isPinRecord)) {
        unpinCursor(clipBefore(held));
    }
    std::erase_if(things, sendRelease);
    while (!things.empty()) {
        Sleep(releaseRetryMs);
        std::erase_if(things, sendReleaseAgain);
    }
}

/// What the guard has done about a program that pins the cursor and says nothing.
struct Watchdog {
    ULONGLONG silentMs = 0;
    bool hasGivenMouseBack = false;
};

/// The last resort. Whoever made the pipe is the program, and it lives as long as the pipe does.
void endProgram(HANDLE pipe) {
    ULONG processId = 0;
    if (GetNamedPipeServerProcessId(pipe, &processId) == 0) {
        return;
    }
    const KernelHandle program(OpenProcess(PROCESS_TERMINATE, FALSE, processId));
    TerminateProcess(program.get(), 1);
}

/// The system asks the hook of a silent thread no more after a few events that it had to wait for, but the
/// clip would stay. After that only the end of the program gives back what it still has: the place of the
/// wheel on the screen and the toggle key, and where the system is more patient the mouse.
void actOnSilence(HANDLE pipe, const HeldThings& held, Watchdog& watchdog) {
    constexpr ULONGLONG endLimitMs = 10'000;
    if (watchdog.silentMs >= captureSilenceLimitMs && !watchdog.hasGivenMouseBack) {
        watchdog.hasGivenMouseBack = true;
        unpinCursor(clipBefore(held));
    }
    if (watchdog.silentMs >= endLimitMs) {
        endProgram(pipe);
    }
}

/// Waits for the next record, with an eye on the program while the cursor is pinned: a pipe without a name
/// knows no wait with a limit. False at the end of the pipe.
bool awaitRecord(HANDLE pipe, const HeldThings& held, Watchdog& watchdog) {
    constexpr DWORD pollMs = 50;
    while (std::ranges::any_of(held.all(), isPinRecord)) {
        DWORD available = 0;
        if (PeekNamedPipe(pipe, nullptr, 0, nullptr, &available, nullptr) == 0) {
            return false;
        }
        if (available > 0) {
            return true;
        }
        const ULONGLONG before = GetTickCount64();
        Sleep(pollMs);
        // While the machine slept the program could not speak either.
        watchdog.silentMs += std::min<ULONGLONG>(GetTickCount64() - before, 2 * pollMs);
        actOnSilence(pipe, held, watchdog);
    }
    return true; // reading it waits
}

/// False at the end of the pipe: the program has died.
bool readRecord(HANDLE pipe, GuardRecord& record) {
    auto* const bytes = reinterpret_cast<unsigned char*>(&record);
    std::size_t have = 0;
    while (have < sizeof(record)) {
        DWORD count = 0;
        if (ReadFile(pipe, bytes + have, static_cast<DWORD>(sizeof(record) - have), &count, nullptr) == 0) {
            return false;
        }
        have += count;
    }
    return true;
}

/// Returns when the program is gone.
void followProgram(HANDLE pipe, HeldThings& held) {
    Watchdog watchdog;
    GuardRecord record;
    while (awaitRecord(pipe, held, watchdog) && readRecord(pipe, record)) {
        held.apply(record);
        if (isPinRecord(record)) {
            watchdog = {};
        }
    }
}

} // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
    HeldThings held;
    followProgram(GetStdHandle(STD_INPUT_HANDLE), held);
    letGoOfAll(held);
    return 0;
}
