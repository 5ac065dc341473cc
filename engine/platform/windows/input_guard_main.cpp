// The guard: a process of its own that lets go of the keys and buttons that the program held when it was
// killed, and of the cursor. It ends with the program.

#include "platform/input_guard_protocol.h"

#include "platform/windows/input_sending.h"
#include "platform/windows/windows_api.h"

#include <cstddef>
#include <vector>

namespace {

bool sameThing(const GuardRecord& left, const GuardRecord& right) {
    return left.kind == right.kind && left.extended == right.extended && left.code == right.code;
}

void applyRecord(std::vector<GuardRecord>& held, const GuardRecord& record) {
    std::erase_if(held, [&](const GuardRecord& other) { return sameThing(other, record); });
    if (record.down != 0) {
        held.push_back(record);
    }
}

void letGo(const GuardRecord& record) {
    switch (record.kind) {
    case GuardedThing::key:
        sendKeyEvent(static_cast<std::uint16_t>(record.code), record.extended != 0, false);
        break;
    case GuardedThing::button:
        sendButtonEvent(record.code, false);
        break;
    case GuardedThing::pointerPin:
        ClipCursor(nullptr);
        break;
    default: // never sent by this platform's program
        break;
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

} // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
    const HANDLE pipe = GetStdHandle(STD_INPUT_HANDLE);
    std::vector<GuardRecord> held;
    GuardRecord record;
    while (readRecord(pipe, record)) {
        applyRecord(held, record);
    }
    for (const GuardRecord& thing : held) {
        letGo(thing);
    }
    return 0;
}
