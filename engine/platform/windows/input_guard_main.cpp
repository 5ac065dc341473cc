// The guard: a separate process that releases the keys and buttons that the program held down when it was
// killed, and unpins the cursor. If the program hangs while the cursor is pinned, the guard unpins it and
// later terminates the program. It ends with the program.

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

/// Retries until all keys and buttons are up: a locked desktop accepts no input.
void releaseAll(const HeldThings& held) {
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

/// Reaction to a program that pins the cursor and sends no heartbeat.
struct Watchdog {
    ULONGLONG silentMs = 0;
    bool hasUnpinned = false;
};

/// The last resort. The program created the pipe and exists as long as it is open.
void endProgram(HANDLE pipe) {
    ULONG processId = 0;
    if (GetNamedPipeServerProcessId(pipe, &processId) == 0) {
        return;
    }
    const KernelHandle program(OpenProcess(PROCESS_TERMINATE, FALSE, processId));
    TerminateProcess(program.get(), 1);
}

/// The system stops calling the hook of a hanging thread after a few timeouts, but the clip would stay. Later
/// only terminating the program frees what it still holds: the screen area of the wheel, the toggle key, and
/// the mouse where the system's timeouts are longer.
void handleSilence(HANDLE pipe, const HeldThings& held, Watchdog& watchdog) {
    constexpr ULONGLONG endLimitMs = 10'000;
    if (watchdog.silentMs >= captureSilenceLimitMs && !watchdog.hasUnpinned) {
        watchdog.hasUnpinned = true;
        unpinCursor(clipBefore(held));
    }
    if (watchdog.silentMs >= endLimitMs) {
        endProgram(pipe);
    }
}

/// Waits for the next record and watches the program while the cursor is pinned. Polls: an anonymous pipe has
/// no wait with a timeout. False at the end of the pipe.
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
        // Limited: during system sleep the program could not send either.
        watchdog.silentMs += std::min<ULONGLONG>(GetTickCount64() - before, 2 * pollMs);
        handleSilence(pipe, held, watchdog);
    }
    return true; // the read blocks
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

/// Returns when the program has ended.
void watchProgram(HANDLE pipe, HeldThings& held) {
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
    watchProgram(GetStdHandle(STD_INPUT_HANDLE), held);
    releaseAll(held);
    return 0;
}
