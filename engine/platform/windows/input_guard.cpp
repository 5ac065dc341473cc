#include "platform/windows/input_guard.h"

#include "common/windows/unlimited_path.h"
#include "platform/paths.h"
#include "platform/threads.h"

#include "platform/windows/handles.h"
#include "platform/windows/held_things.h"

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

namespace rotika {

namespace {

/// Never destroyed: its end must come with the end of the process, and with nothing else.
struct GuardLink {
    std::mutex mutex;
    KernelHandle pipe; // our end
    HeldThings told;
};

GuardLink& guardLink() {
    static auto& link = *new GuardLink;
    return link;
}

/// A start-up record that lets the child inherit one handle and no other.
class SingleHandleStartup {
public:
    explicit SingleHandleStartup(HANDLE handle) : inherited(handle) {
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        storage.resize(size);
        info.StartupInfo.cb = sizeof(info);
        info.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
        info.StartupInfo.hStdInput = handle;
        info.lpAttributeList = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(storage.data());
        initialized = InitializeProcThreadAttributeList(info.lpAttributeList, 1, 0, &size) != 0;
        usable = initialized &&
                 UpdateProcThreadAttribute(info.lpAttributeList, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST,
                                           &inherited, sizeof(inherited), nullptr, nullptr) != 0;
    }
    SingleHandleStartup(const SingleHandleStartup&) = delete;
    SingleHandleStartup& operator=(const SingleHandleStartup&) = delete;
    ~SingleHandleStartup() {
        if (initialized) {
            DeleteProcThreadAttributeList(info.lpAttributeList);
        }
    }

    /// Null when the system refused.
    STARTUPINFOW* record() { return usable ? &info.StartupInfo : nullptr; }

private:
    HANDLE inherited;
    std::vector<unsigned char> storage;
    STARTUPINFOEXW info{};
    bool initialized = false;
    bool usable = false;
};

/// Its process; empty when it could not be started.
KernelHandle runGuardProgram(HANDLE readEnd) {
    SingleHandleStartup startup(readEnd);
    if (startup.record() == nullptr) {
        return {};
    }
    const std::wstring program = wideText(joinPath(programFolder(), u"rotika-guard.exe"));
    // Not every system starts a program by a long path, and not every one keeps short names.
    for (const std::wstring& form : {unlimitedPath(program), shortPath(program)}) {
        PROCESS_INFORMATION started{};
        if (CreateProcessW(form.c_str(), nullptr, nullptr, nullptr, TRUE,
                           EXTENDED_STARTUPINFO_PRESENT | CREATE_NO_WINDOW, nullptr, nullptr,
                           startup.record(), &started) != 0) {
            CloseHandle(started.hThread);
            return KernelHandle(started.hProcess);
        }
    }
    return {};
}

void writeRecord(HANDLE pipe, const GuardRecord& record) {
    DWORD written = 0;
    WriteFile(pipe, &record, sizeof(record), &written, nullptr);
}

/// Starts a guard that knows what is held. Its process; empty when it could not be started.
KernelHandle startGuard() {
    constexpr DWORD pipeBytes = 64 * 1024;
    KernelHandle readEnd;
    KernelHandle writeEnd;
    if (CreatePipe(readEnd.slot(), writeEnd.slot(), nullptr, pipeBytes) == 0 ||
        SetHandleInformation(readEnd.get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT) == 0) {
        return {};
    }
    // A guard that does not read must not stop our keys: a record that finds no room is lost instead.
    DWORD mode = PIPE_READMODE_BYTE | PIPE_NOWAIT;
    SetNamedPipeHandleState(writeEnd.get(), &mode, nullptr, nullptr);
    KernelHandle process = runGuardProgram(readEnd.get());
    if (process) {
        GuardLink& link = guardLink();
        const std::lock_guard<std::mutex> hold(link.mutex);
        link.pipe = std::move(writeEnd);
        for (const GuardRecord& record : link.told.all()) {
            writeRecord(link.pipe.get(), record);
        }
    }
    return process;
}

/// Before the next start: none at first, then longer and longer while guards die as soon as they are started.
DWORD pauseAfter(ULONGLONG lifeMs, DWORD lastPauseMs) {
    constexpr ULONGLONG shortLifeMs = 1000;
    constexpr DWORD firstPauseMs = 1000;
    constexpr DWORD longestPauseMs = 60'000;
    return lifeMs >= shortLifeMs ? 0 : std::clamp(2 * lastPauseMs, firstPauseMs, longestPauseMs);
}

/// Follows each guard that dies, or could not be started, by a new one, to the end of this process. A thread
/// of its own: starting a program may take its time.
void replaceDeadGuards(KernelHandle guard) noexcept {
    DWORD pauseMs = 0;
    while (true) {
        const ULONGLONG startedAt = GetTickCount64();
        if (guard) {
            WaitForSingleObject(guard.get(), INFINITE);
        }
        pauseMs = pauseAfter(GetTickCount64() - startedAt, pauseMs);
        Sleep(pauseMs);
        // The system ends the guard with the session, and lets no program start any more.
        if (GetSystemMetrics(SM_SHUTTINGDOWN) != 0) {
            return;
        }
        guard = startGuard();
    }
}

} // namespace

void startInputGuard() {
    // Without a thread a guard that dies is not replaced.
    static_cast<void>(
        startDetachedThread([guard = startGuard().release()] { replaceDeadGuards(KernelHandle(guard)); }));
}

void tellInputGuard(const GuardRecord& record) {
    GuardLink& link = guardLink();
    const std::lock_guard<std::mutex> hold(link.mutex);
    link.told.apply(record);
    if (link.pipe) {
        writeRecord(link.pipe.get(), record);
    }
}

} // namespace rotika
