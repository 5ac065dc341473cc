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

/// Never destroyed: the pipe must close only when the process ends.
struct GuardLink {
    std::mutex mutex;
    KernelHandle pipe;  // our end
    HeldThings current; // sent to a new guard
};

GuardLink& guardLink() {
    static auto& link = *new GuardLink;
    return link;
}

/// Start-up information that lets the child inherit exactly one handle.
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

/// Returns the process; empty if it could not be started.
KernelHandle runGuardProgram(HANDLE readEnd) {
    SingleHandleStartup startup(readEnd);
    if (startup.record() == nullptr) {
        return {};
    }
    const std::wstring program = wideText(joinPath(programFolder(), u"rotika-guard.exe"));
    // Some systems cannot start a program by a long path, others have no short names.
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

/// Starts a guard and sends it the current state. Returns the process; empty if it could not be started.
KernelHandle startGuard() {
    constexpr DWORD pipeBytes = 64 * 1024;
    KernelHandle readEnd;
    KernelHandle writeEnd;
    if (CreatePipe(readEnd.slot(), writeEnd.slot(), nullptr, pipeBytes) == 0 ||
        SetHandleInformation(readEnd.get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT) == 0) {
        return {};
    }
    // A guard that does not read must not block injection: a record that does not fit is discarded.
    DWORD mode = PIPE_READMODE_BYTE | PIPE_NOWAIT;
    SetNamedPipeHandleState(writeEnd.get(), &mode, nullptr, nullptr);
    KernelHandle process = runGuardProgram(readEnd.get());
    if (process) {
        GuardLink& link = guardLink();
        const std::lock_guard<std::mutex> hold(link.mutex);
        link.pipe = std::move(writeEnd);
        for (const GuardRecord& record : link.current.all()) {
            writeRecord(link.pipe.get(), record);
        }
    }
    return process;
}

/// Delay before the next start: none at first, then doubled while guards die soon after their start.
DWORD pauseAfter(ULONGLONG lifetimeMs, DWORD lastPauseMs) {
    constexpr ULONGLONG minLifetimeMs = 1000;
    constexpr DWORD minPauseMs = 1000;
    constexpr DWORD maxPauseMs = 60'000;
    return lifetimeMs >= minLifetimeMs ? 0 : std::clamp(2 * lastPauseMs, minPauseMs, maxPauseMs);
}

/// Replaces each guard that died or could not be started, until this process ends. Runs on its own thread:
/// starting a program may take long.
void replaceDeadGuards(KernelHandle guard) noexcept {
    DWORD pauseMs = 0;
    while (true) {
        const ULONGLONG startedAt = GetTickCount64();
        if (guard) {
            WaitForSingleObject(guard.get(), INFINITE);
        }
        pauseMs = pauseAfter(GetTickCount64() - startedAt, pauseMs);
        Sleep(pauseMs);
        // At the end of the session the system ends the guard and starts no more programs.
        if (GetSystemMetrics(SM_SHUTTINGDOWN) != 0) {
            return;
        }
        guard = startGuard();
    }
}

} // namespace

void startInputGuard() {
    // Without the thread a guard that dies is not replaced.
    static_cast<void>(
        startDetachedThread([guard = startGuard().release()] { replaceDeadGuards(KernelHandle(guard)); }));
}

void notifyInputGuard(const GuardRecord& record) {
    GuardLink& link = guardLink();
    const std::lock_guard<std::mutex> hold(link.mutex);
    link.current.apply(record);
    if (link.pipe) {
        writeRecord(link.pipe.get(), record);
    }
}

} // namespace rotika
