#include "shell/process/control.h"

#include "common/data_folder.h"
#include "shell/process/windows/hidden_window.h"

// clang-format off
#include <windows.h>
#include <tlhelp32.h>
// clang-format on

#include <QThread>
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <type_traits>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// Every copy of the program has a hidden window of this class. Commands are WM_COPYDATA with this number: the
// name and the arguments in UTF-16, each ending in a zero. Who sends them is not checked: no message can
// prove it, and the system delivers none from another session or from a program with fewer rights.
constexpr wchar_t windowClass[] = L"RotikaControl";
constexpr wchar_t firstCopyTitle[] = L"Rotika";
constexpr wchar_t secondCopyTitle[] = L"Rotika (2)";
constexpr wchar_t quittingCopyTitle[] = L"Rotika (--quit)"; // waits for the end of the others itself
constexpr ULONG_PTR commandData = 0x526F7431;
constexpr DWORD maxDataBytes = 1 << 20;
constexpr LRESULT commandReceived = 1;
constexpr std::chrono::milliseconds replyLimit{2000};

constexpr DWORD retryMs = 100;

/// There is one per process.
ControlListener* currentListener = nullptr;
HWND currentWindow = nullptr;

struct HandleCloser {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<std::remove_pointer_t<HANDLE>, HandleCloser>;

std::vector<BYTE> userOf(HANDLE process) {
    HANDLE opened = nullptr;
    if (process == nullptr || OpenProcessToken(process, TOKEN_QUERY, &opened) == 0)
        return {};
    const Handle token(opened);
    DWORD size = 0;
    GetTokenInformation(opened, TokenUser, nullptr, 0, &size);
    std::vector<BYTE> record(size);
    if (size == 0 || GetTokenInformation(opened, TokenUser, record.data(), size, &size) == 0)
        return {};
    const PSID user = reinterpret_cast<const TOKEN_USER*>(record.data())->User.Sid;
    const auto* first = static_cast<const BYTE*>(user);
    return {first, first + GetLengthSid(user)};
}

/// Also true if the user cannot be read, as of a process with more rights: such a one must not pass for
/// ended.
bool mayBeOwnUser(HANDLE process) {
    const std::vector<BYTE> user = userOf(process);
    return user.empty() || user == userOf(GetCurrentProcess());
}

ControlCommand commandOf(const COPYDATASTRUCT& data) {
    const auto* text = static_cast<const wchar_t*>(data.lpData);
    const std::size_t length = data.cbData / sizeof(wchar_t);
    if (data.dwData != commandData || text == nullptr || length == 0 || data.cbData > maxDataBytes ||
        text[length - 1] != L'\0')
        return {};
    QStringList words = QString::fromWCharArray(text, static_cast<qsizetype>(length - 1)).split(QChar(u'\0'));
    const QString name = words.takeFirst();
    return {name, words};
}

LRESULT commandArrived(const COPYDATASTRUCT* data) {
    const ControlCommand command = data != nullptr ? commandOf(*data) : ControlCommand();
    if (!isValidCommand(command) || currentListener == nullptr)
        return 0;
    currentListener->arrive(command);
    return commandReceived;
}

LRESULT CALLBACK controlProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == WM_COPYDATA)
        return commandArrived(reinterpret_cast<const COPYDATASTRUCT*>(lParam));
    return message == WM_CLOSE ? 0 : DefWindowProcW(window, message, wParam, lParam);
}

enum class Sent { received, refused, unanswered };

Sent send(HWND receiver, const ControlCommand& command, std::chrono::milliseconds limit = replyLimit) {
    std::wstring text;
    for (const QString& word : QStringList(command.name) + command.arguments)
        text += word.toStdWString() + L'\0';
    COPYDATASTRUCT data{commandData, static_cast<DWORD>(text.size() * sizeof(wchar_t)), text.data()};
    DWORD_PTR reply = 0;
    const auto waitMs = static_cast<UINT>(std::clamp(limit, 1ms, replyLimit).count());
    if (SendMessageTimeoutW(receiver, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data), SMTO_ABORTIFHUNG,
                            waitMs, &reply) == 0)
        return IsWindow(receiver) != 0 ? Sent::unanswered : Sent::refused;
    return reply == commandReceived ? Sent::received : Sent::refused;
}

/// A process that runs from this program's folder, of this user as far as that can be known.
struct Copy {
    DWORD number;
    Handle process;
};

/// Compared as files: the path may be written in several ways.
bool runsFrom(const std::filesystem::path& folder, HANDLE process) {
    std::wstring name(32768, L'\0');
    auto length = static_cast<DWORD>(name.size());
    if (QueryFullProcessImageNameW(process, 0, name.data(), &length) == 0)
        return false;
    name.resize(length);
    std::error_code failure;
    return std::filesystem::equivalent(std::filesystem::path(name).parent_path(), folder, failure);
}

/// The control window of a process, of this title or of any (null).
HWND controlWindowOf(DWORD process, const wchar_t* title = nullptr) {
    HWND window = nullptr;
    while ((window = FindWindowExW(nullptr, window, windowClass, title)) != nullptr) {
        DWORD owner = 0;
        GetWindowThreadProcessId(window, &owner);
        if (owner == process)
            break;
    }
    return window;
}

std::vector<Copy> runningCopies() {
    std::vector<Copy> found;
    const std::filesystem::path folder = executableFolder();
    const Handle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(snapshot.get(), &entry); more != 0;
         more = Process32NextW(snapshot.get(), &entry)) {
        const std::wstring program = entry.szExeFile;
        const bool isOurs =
            program == L"rotika.exe" || program == L"rotika-engine.exe" || program == L"rotika-guard.exe";
        if (!isOurs || entry.th32ProcessID == GetCurrentProcessId() ||
            controlWindowOf(entry.th32ProcessID, quittingCopyTitle) != nullptr)
            continue;
        Handle process(
            OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE, FALSE, entry.th32ProcessID));
        if (process && mayBeOwnUser(process.get()) && runsFrom(folder, process.get()))
            found.push_back({entry.th32ProcessID, std::move(process)});
    }
    return found;
}

/// Asks one process; it may not be ready for it yet. The engine, and a copy that only shows a text in a box
/// of the system, have no such window: WM_QUIT ends their loops.
void askToQuit(const Copy& copy) {
    const HWND control = controlWindowOf(copy.number);
    if (control != nullptr) {
        send(control, {quitCommand.toString(), {}});
        return;
    }
    const auto visit = [](HWND window, LPARAM asked) noexcept -> BOOL {
        DWORD process = 0;
        const DWORD thread = GetWindowThreadProcessId(window, &process);
        if (process == static_cast<DWORD>(asked))
            PostThreadMessageW(thread, WM_QUIT, 0, 0);
        return TRUE;
    };
    EnumWindows(visit, static_cast<LPARAM>(copy.number));
}

using Window = std::unique_ptr<std::remove_pointer_t<HWND>, decltype(&DestroyWindow)>;

} // namespace

void ControlListener::open(bool isFirstCopy) {
    currentListener = this;
    currentWindow =
        createHiddenWindow(windowClass, controlProcedure, isFirstCopy ? firstCopyTitle : secondCopyTitle);
}

void ControlListener::close() {
    DestroyWindow(currentWindow);
    currentWindow = nullptr;
    currentListener = nullptr;
}

/// Not repeated for a copy that hangs, which might obey each of them later.
bool sendToRunningCopy(const ControlCommand& command, std::chrono::milliseconds limit) {
    for (const auto end = Clock::now() + limit; Clock::now() < end; Sleep(retryMs)) {
        const HWND receiver = FindWindowW(windowClass, firstCopyTitle);
        if (receiver == nullptr)
            continue;
        DWORD process = 0;
        GetWindowThreadProcessId(receiver, &process);
        AllowSetForegroundWindow(process); // its dialog comes to the front
        const Sent sent = send(receiver, command, limit);
        if (sent != Sent::refused)
            return sent == Sent::received;
    }
    return false;
}

/// On a thread, which may outlive everything.
void sendInBackground(const ControlCommand& command) {
    QThread* const thread = QThread::create([command] { sendToRunningCopy(command, replyLimit); });
    thread->start();
}

bool quitRunningCopies(std::chrono::milliseconds limit) {
    const Window mark(createHiddenWindow(windowClass, controlProcedure, quittingCopyTitle), DestroyWindow);
    const auto end = Clock::now() + limit;
    for (std::vector<Copy> copies = runningCopies(); !copies.empty(); copies = runningCopies()) {
        if (Clock::now() >= end)
            return false;
        for (const Copy& copy : copies)
            askToQuit(copy);
        WaitForSingleObject(copies.front().process.get(), retryMs);
    }
    return true;
}
