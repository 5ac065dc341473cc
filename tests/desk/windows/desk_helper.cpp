// The desk's helper program for Windows:
//   desk_helper record LOG WIDTH HEIGHT  shows the foreground window and logs the input that it receives
//   desk_helper activate FILE            sends the engine this wheel file; exit status 1 if it accepts
//   desk_helper stray                    sends the engine private messages that no worker has posted, and the
//                                        program commands that it must refuse
//   desk_helper end-session              tells the engine's process that the session ends
//   desk_helper taken KEY FLAGS          whether this hot key is registered; exit status 1 for yes
//   desk_helper [WORD]                   the program that a step opens: notes WORD or "started"
//
// The log has one line for each event: TIME KIND KEY STATE X Y, with the time in the system's milliseconds, a
// virtual key also for a button, and the state of shift, ctrl and alt by X11's bits. A line of the kind
// "held" lists all keys that are down on the desktop, whenever they have changed.

#include <windows.h>
#include <windowsx.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <utility>

namespace {

constexpr int noEngine = 3;
constexpr ULONG_PTR activateWheelFile = 1;
constexpr UINT heldPollMs = 20;

std::ofstream eventLog;

void write(const char* kind, const std::string& keys = "0") {
    int state = 0;
    for (const auto& [key, bit] : {std::pair{VK_SHIFT, 1}, {VK_CONTROL, 4}, {VK_MENU, 8}})
        state += GetKeyState(key) < 0 ? bit : 0;
    const DWORD place = GetMessagePos();
    eventLog << GetMessageTime() << ' ' << kind << ' ' << keys << ' ' << state << ' ' << GET_X_LPARAM(place)
             << ' ' << GET_Y_LPARAM(place) << std::endl;
}

void CALLBACK writeHeldKeys(HWND, UINT, UINT_PTR, DWORD) {
    static std::string before = "0";
    std::string held = "0";
    for (int key = 1; key < 255; ++key)
        held += GetAsyncKeyState(key) < 0 ? "," + std::to_string(key) : "";
    if (held != before)
        write("held", held);
    before = held;
}

/// Each button's messages down, up and double click have consecutive numbers.
bool writeButton(UINT message, WPARAM details) {
    const int extra = GET_XBUTTON_WPARAM(details) == XBUTTON1 ? VK_XBUTTON1 : VK_XBUTTON2;
    const std::map<UINT, int> keys{{WM_LBUTTONDOWN, VK_LBUTTON},
                                   {WM_MBUTTONDOWN, VK_MBUTTON},
                                   {WM_RBUTTONDOWN, VK_RBUTTON},
                                   {WM_XBUTTONDOWN, extra}};
    const bool isDown = keys.contains(message);
    if (!isDown && !keys.contains(message - 1))
        return false;
    write(isDown ? "button-down" : "button-up", std::to_string(keys.at(isDown ? message : message - 1)));
    return true;
}

LRESULT CALLBACK recordMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_KEYDOWN || message == WM_SYSKEYDOWN)
        write((lParam & 1 << 30) != 0 ? "key-repeat" : "key-down", std::to_string(wParam));
    else if (message == WM_KEYUP || message == WM_SYSKEYUP)
        write("key-up", std::to_string(wParam));
    else if (message == WM_MOUSEMOVE)
        write("motion");
    else if (message == WM_SETFOCUS || message == WM_KILLFOCUS)
        write(message == WM_SETFOCUS ? "focus-in" : "focus-out");
    else if (message == WM_DESTROY)
        PostQuitMessage(0);
    else if (!writeButton(message, wParam))
        return DefWindowProcW(window, message, wParam, lParam);
    return 0;
}

int record(const char* log, int width, int height) {
    SetProcessDPIAware();
    eventLog.open(log, std::ios::binary);
    WNDCLASSW description{};
    description.lpfnWndProc = recordMessage;
    description.hInstance = GetModuleHandleW(nullptr);
    description.lpszClassName = L"Recorder";
    description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    description.hbrBackground =
        CreatePatternBrush(CreateBitmap(4, 4, 1, 1, "\x30\0\x30\0\xC0\0\xC0")); // chequered
    RegisterClassW(&description);
    const HWND window = CreateWindowExW(0, L"Recorder", L"recorder", WS_POPUP, 0, 0, width, height, nullptr,
                                        nullptr, description.hInstance, nullptr);
    ShowWindow(window, SW_SHOW);
    SetForegroundWindow(window);
    SetTimer(nullptr, 0, heldPollMs, writeHeldKeys);
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
        DispatchMessageW(&message);
    return 0;
}

int activate(HWND engine, const std::string& file) {
    std::wstring wide(file.begin(), file.end());
    COPYDATASTRUCT data{activateWheelFile, static_cast<DWORD>((wide.size() + 1) * sizeof(wchar_t)),
                        wide.data()};
    return static_cast<int>(SendMessageW(engine, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data)));
}

bool sendStrayMessages(HWND engine) {
    bool isSent = true;
    const HWND control = FindWindowW(L"RotikaControl", nullptr);
    constexpr ULONG_PTR command = 0x526F7431;
    using namespace std::string_literals;
    const std::pair<ULONG_PTR, std::wstring> refused[] = {{command, L"quit"s},
                                                          {command, L"quit\0a\0"s},
                                                          {command, L"cos\0"s},
                                                          {command, L""s},
                                                          {1, L"quit\0"s}};
    for (auto [kind, text] : refused) {
        COPYDATASTRUCT data{kind, static_cast<DWORD>(text.size() * sizeof(wchar_t)), text.data()};
        isSent = isSent && SendMessageW(control, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data)) == 0;
    }
    for (const UINT message : {WM_APP + 5U, WM_APP + 6U, WM_APP + 8U})
        for (const LPARAM made : {0LL, 0x7FFF12345678LL})
            isSent = isSent && PostMessageW(engine, message, 0, made) != 0;
    return isSent;
}

struct SessionMessage {
    DWORD process;
    UINT message;
};

BOOL CALLBACK sendTo(HWND window, LPARAM data) {
    const auto& wanted = *reinterpret_cast<SessionMessage*>(data);
    constexpr UINT limitMs = 5000;
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process == wanted.process)
        SendMessageTimeoutW(window, wanted.message, wanted.message == WM_ENDSESSION, 0, SMTO_ABORTIFHUNG,
                            limitMs, nullptr);
    return TRUE;
}

/// As the system does, but for the process's end if it does not end by itself.
int endSession(HWND engine) {
    SessionMessage each{0, 0};
    GetWindowThreadProcessId(engine, &each.process);
    for (const UINT message : {WM_QUERYENDSESSION, WM_ENDSESSION}) {
        each.message = message;
        EnumWindows(sendTo, reinterpret_cast<LPARAM>(&each));
    }
    return engine != nullptr ? 0 : noEngine;
}

int note(const std::string& word) {
    std::ofstream notes(std::getenv("DESK_NOTES"), std::ios::binary | std::ios::app);
    return notes << word << "\n" << std::flush ? 0 : 2;
}

} // namespace

int main(int argc, char** argv) {
    const std::string word = argc > 1 ? argv[1] : "started";
    if (word == "record" && argc == 5)
        return record(argv[2], std::atoi(argv[3]), std::atoi(argv[4]));
    if (word == "taken" && argc == 4)
        return RegisterHotKey(nullptr, 1, std::stoul(argv[3]), std::stoul(argv[2])) == 0;
    const HWND engine = FindWindowW(L"RadialOverlayMain", nullptr);
    if (word == "activate" && argc == 3)
        return activate(engine, argv[2]);
    if (word == "stray")
        return sendStrayMessages(engine) ? 0 : noEngine;
    if (word == "end-session")
        return endSession(engine);
    return note(word);
}
