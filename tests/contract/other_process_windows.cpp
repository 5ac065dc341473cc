#include "line_reader.h"
#include "other_process.h"

#include "platform/windows/handles.h"

struct OtherProcess::State {
    KernelHandle process;
    KernelHandle output;
    KernelHandle input; // open as long as we live
    std::unique_ptr<LineReader> reader;
};

namespace {

std::wstring commandLine(const std::vector<std::string>& role) {
    wchar_t self[MAX_PATH]{};
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    std::wstring line = L"\"" + std::wstring(self) + L"\" --role";
    for (const std::string& word : role)
        line += L" " + std::wstring(word.begin(), word.end());
    return line;
}

/// A pipe of which the other process inherits the read or the write end.
void makePipe(KernelHandle& readEnd, KernelHandle& writeEnd, const KernelHandle& inherited) {
    CreatePipe(readEnd.slot(), writeEnd.slot(), nullptr, 0);
    SetHandleInformation(inherited.get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
}

} // namespace

OtherProcess::OtherProcess(const std::vector<std::string>& role) : state(std::make_unique<State>()) {
    KernelHandle itsInput;
    KernelHandle itsOutput;
    makePipe(itsInput, state->input, itsInput);
    makePipe(state->output, itsOutput, itsOutput);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = itsInput.get();
    startup.hStdOutput = itsOutput.get();
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    std::wstring line = commandLine(role);
    PROCESS_INFORMATION started{};
    AllowSetForegroundWindow(ASFW_ANY);
    if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                       &started) == 0) {
        return;
    }
    CloseHandle(started.hThread);
    state->process = KernelHandle(started.hProcess);
    state->reader = std::make_unique<LineReader>([pipe = state->output.get()](char* bytes, std::size_t room) {
        DWORD count = 0;
        return ReadFile(pipe, bytes, static_cast<DWORD>(room), &count, nullptr) != 0 ? std::size_t{count} : 0;
    });
}

OtherProcess::~OtherProcess() {
    if (state->process) {
        TerminateProcess(state->process.get(), 1);
        WaitForSingleObject(state->process.get(), INFINITE);
    }
}

std::vector<std::string> OtherProcess::lines() const {
    return state->reader ? state->reader->lines() : std::vector<std::string>();
}
