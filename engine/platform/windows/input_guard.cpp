#include "platform/windows/input_guard.h"

#include "platform/paths.h"

#include "platform/windows/handles.h"

#include <array>
#include <atomic>
#include <vector>

namespace {

/// Our end of the pipe. Never closed: its end must come with the end of the process, and with nothing else.
std::atomic<HANDLE> guardPipe{nullptr};

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

bool runGuardProgram(HANDLE readEnd) {
    SingleHandleStartup startup(readEnd);
    if (startup.record() == nullptr) {
        return false;
    }
    const std::u16string program = joinPath(programFolder(), u"rotika-guard.exe");
    PROCESS_INFORMATION started{};
    if (CreateProcessW(wideText(program), nullptr, nullptr, nullptr, TRUE,
                       EXTENDED_STARTUPINFO_PRESENT | CREATE_NO_WINDOW, nullptr, nullptr, startup.record(),
                       &started) == 0) {
        return false;
    }
    CloseHandle(started.hThread);
    CloseHandle(started.hProcess);
    return true;
}

} // namespace

void startInputGuard() {
    constexpr DWORD pipeBytes = 64 * 1024;
    KernelHandle readEnd;
    KernelHandle writeEnd;
    if (CreatePipe(readEnd.slot(), writeEnd.slot(), nullptr, pipeBytes) == 0 ||
        SetHandleInformation(readEnd.get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT) == 0) {
        return;
    }
    // A guard that does not read must not stop our keys: a record that finds no room is lost instead.
    DWORD mode = PIPE_READMODE_BYTE | PIPE_NOWAIT;
    SetNamedPipeHandleState(writeEnd.get(), &mode, nullptr, nullptr);
    if (runGuardProgram(readEnd.get())) {
        guardPipe = writeEnd.release();
    }
}

void tellInputGuard(const GuardRecord& record) {
    const HANDLE pipe = guardPipe;
    if (pipe != nullptr) {
        DWORD written = 0;
        WriteFile(pipe, &record, sizeof(record), &written, nullptr);
    }
}
