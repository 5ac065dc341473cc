// The guard: a process of its own that lets go of the keys and buttons that the program held when it was
// killed, and of the cursor; of the cursor also when the program has stopped answering. It ends with the
// program.

#include "platform/input_guard_protocol.h"
#include "platform/pointer_capture.h"

#include "platform/windows/cursor_pin.h"
#include "platform/windows/held_things.h"
#include "platform/windows/input_sending.h"
#include "platform/windows/windows_api.h"

#include <algorithm>
#include <cstddef>

namespace {

void letGo(const GuardRecord& record, const HeldThings& held) {
    switch (record.kind) {
    case GuardedThing::key:
        sendKeyEvent(static_cast<std::uint16_t>(record.code), record.extended != 0, false);
        break;
    case GuardedThing::button:
        sendButtonEvent(record.code, false);
        break;
    case GuardedThing::pointerPin:
        if (isPinRecord(record))
            unpinCursor(clipBefore(held));
        break;
    default: // never sent by this platform's program
        break;
    }
}

bool isPinned(const HeldThings& held) {
    return std::ranges::any_of(held.all(), isPinRecord);
}

enum class Arrival { record, silence, end };

/// Waits for the next record; while the cursor is pinned only until the owner thread, last heard of at
/// `heardAt`, has been silent for too long. A pipe without a name knows no wait with a limit.
Arrival awaitRecord(HANDLE pipe, const HeldThings& held, ULONGLONG heardAt) {
    constexpr DWORD pollMs = 50;
    if (!isPinned(held))
        return Arrival::record; // reading it waits
    while (true) {
        DWORD available = 0;
        if (PeekNamedPipe(pipe, nullptr, 0, nullptr, &available, nullptr) == 0)
            return Arrival::end;
        if (available > 0)
            return Arrival::record;
        if (GetTickCount64() - heardAt > captureSilenceLimitMs)
            return Arrival::silence;
        Sleep(pollMs);
    }
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

/// The hook of a thread that does not answer lets the mouse through by itself: the system waits for it only
/// so long, and then asks it no more. The clip would stay.
void giveMouseBack(HeldThings& held) {
    unpinCursor(clipBefore(held));
    held.apply(pinRecord(false));
}

/// Returns when the program is gone.
void followProgram(HANDLE pipe, HeldThings& held) {
    ULONGLONG heardAt = 0;
    while (true) {
        const Arrival arrival = awaitRecord(pipe, held, heardAt);
        if (arrival == Arrival::silence) {
            giveMouseBack(held);
            continue;
        }
        GuardRecord record;
        if (arrival == Arrival::end || !readRecord(pipe, record))
            return;
        held.apply(record);
        if (isPinRecord(record))
            heardAt = GetTickCount64();
    }
}

} // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
    SetProcessDPIAware(); // as the program is: both speak of the same pixels
    HeldThings held;
    followProgram(GetStdHandle(STD_INPUT_HANDLE), held);
    for (const GuardRecord& thing : held.all()) {
        letGo(thing, held);
    }
    return 0;
}
