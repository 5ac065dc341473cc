// The desk's hand among Windows programs:
//   desk_helper record LOG WIDTH HEIGHT  the window in front, which writes down the input that it gets
//   desk_helper activate FILE            the engine is to take the wheels of this file; exit status 1 for yes
//   desk_helper close                    asks all its windows to close, as whoever ends a program by them
//   does desk_helper stray                    sends it private messages that no worker of its has posted
//   desk_helper quit                     ends it in good order
//   desk_helper [WORD]                   as the program that a step opens: adds WORD or "started" to the
//   notes
//
// The log has one line for an event, TIME KIND NAME STATE X Y: time in the system's milliseconds, names as
// X11 has them for keys without shift, the state of shift, ctrl and alt by X11's bits. The kind "held" lists
// what is down anywhere on the desktop whenever that has changed.

#include <windows.h>
#include <windowsx.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

namespace {

constexpr int noEngine = 3;
constexpr ULONG_PTR activateWheelFile = 1;
constexpr UINT lookIntervalMs = 20;

std::FILE* eventLog = nullptr;

std::string nameOf(WPARAM key) {
    static const std::map<WPARAM, const char*> names = {{VK_LBUTTON, "left"},
                                                        {VK_MBUTTON, "middle"},
                                                        {VK_RBUTTON, "right"},
                                                        {VK_XBUTTON1, "side1"},
                                                        {VK_XBUTTON2, "side2"},
                                                        {VK_SPACE, "space"},
                                                        {VK_RETURN, "Return"},
                                                        {VK_TAB, "Tab"},
                                                        {VK_ESCAPE, "Escape"},
                                                        {VK_SHIFT, "Shift_L"},
                                                        {VK_CONTROL, "Control_L"},
                                                        {VK_MENU, "Alt_L"},
                                                        {VK_UP, "Up"},
                                                        {VK_DOWN, "Down"},
                                                        {VK_LEFT, "Left"},
                                                        {VK_RIGHT, "Right"},
                                                        {VK_INSERT, "Insert"},
                                                        {VK_DELETE, "Delete"},
                                                        {VK_HOME, "Home"},
                                                        {VK_END, "End"},
                                                        {VK_PRIOR, "Prior"},
                                                        {VK_NEXT, "Next"},
                                                        {VK_BACK, "BackSpace"},
                                                        {VK_LWIN, "Super_L"},
                                                        {VK_CAPITAL, "Caps_Lock"},
                                                        {VK_VOLUME_UP, "XF86AudioRaiseVolume"},
                                                        {VK_MEDIA_PLAY_PAUSE, "XF86AudioPlay"}};
    if (const auto named = names.find(key); named != names.end())
        return named->second;
    if (key >= VK_F1 && key <= VK_F24)
        return "F" + std::to_string(key - VK_F1 + 1);
    if (key >= 'A' && key <= 'Z')
        return {static_cast<char>(key - 'A' + 'a')};
    return key >= '0' && key <= '9' ? std::string{static_cast<char>(key)} : "-";
}

void write(const char* kind, const std::string& name = "-") {
    int state = 0;
    for (const auto& [key, bit] : {std::pair{VK_SHIFT, 1}, {VK_CONTROL, 4}, {VK_MENU, 8}})
        state += GetKeyState(key) < 0 ? bit : 0;
    const DWORD place = GetMessagePos();
    std::fprintf(eventLog, "%lu %s %s %d %d %d\n", static_cast<unsigned long>(GetMessageTime()), kind,
                 name.c_str(), state, GET_X_LPARAM(place), GET_Y_LPARAM(place));
    std::fflush(eventLog);
}

void CALLBACK writeWhatIsHeld(HWND, UINT, UINT_PTR, DWORD) {
    static std::string before = "-";
    std::string held = "-";
    for (int key = 1; key < 255; ++key) {
        if (const std::string name = nameOf(static_cast<WPARAM>(key));
            name != "-" && GetAsyncKeyState(key) < 0)
            held += "," + name;
    }
    if (held != before)
        write("held", held);
    before = held;
}

/// Each kind of button has the messages down, up and double click in a row.
bool writeButton(UINT message, WPARAM details) {
    const char* extra = GET_XBUTTON_WPARAM(details) == XBUTTON1 ? "side1" : "side2";
    for (const auto& [down, name] : {std::pair<UINT, const char*>{WM_LBUTTONDOWN, "left"},
                                     {WM_MBUTTONDOWN, "middle"},
                                     {WM_RBUTTONDOWN, "right"},
                                     {WM_XBUTTONDOWN, extra}}) {
        if (message == down || message == down + 1) {
            write(message == down ? "button-down" : "button-up", name);
            return true;
        }
    }
    return false;
}

LRESULT CALLBACK recordMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_KEYDOWN || message == WM_SYSKEYDOWN)
        write((lParam & 1 << 30) != 0 ? "key-repeat" : "key-down", nameOf(wParam));
    else if (message == WM_KEYUP || message == WM_SYSKEYUP)
        write("key-up", nameOf(wParam));
    else if (message == WM_MOUSEMOVE)
        write("motion");
    else if (message == WM_DESTROY)
        PostQuitMessage(0);
    else if (!writeButton(message, wParam))
        return DefWindowProcW(window, message, wParam, lParam);
    return 0;
}

int record(const char* log, int width, int height) {
    SetProcessDPIAware();
    eventLog = std::fopen(log, "ab");
    if (eventLog == nullptr)
        return 2;
    WNDCLASSW description{};
    description.lpfnWndProc = recordMessage;
    description.hInstance = GetModuleHandleW(nullptr);
    description.lpszClassName = L"Recorder";
    description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    description.hbrBackground = CreateSolidBrush(RGB(0x20, 0x30, 0x40));
    RegisterClassW(&description);
    const HWND window = CreateWindowExW(0, L"Recorder", L"recorder", WS_POPUP, 0, 0, width, height, nullptr,
                                        nullptr, description.hInstance, nullptr);
    ShowWindow(window, SW_SHOW);
    SetForegroundWindow(window);
    SetTimer(nullptr, 0, lookIntervalMs, writeWhatIsHeld);
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

BOOL CALLBACK closeWindow(HWND window, LPARAM) {
    return PostMessageW(window, WM_CLOSE, 0, 0);
}

int sendStrays(HWND engine) {
    for (const UINT message : {WM_APP + 5U, WM_APP + 6U, WM_APP + 8U}) {
        for (const LPARAM made : {LPARAM{0}, LPARAM{0x1234}, static_cast<LPARAM>(0x7FFF12345678)}) {
            if (PostMessageW(engine, message, 0, made) == 0)
                return noEngine;
        }
    }
    return 0;
}

int note(const char* word) {
    const char* notes = std::getenv("DESK_NOTES");
    std::FILE* stream = notes != nullptr ? std::fopen(notes, "ab") : nullptr;
    if (stream == nullptr)
        return 2;
    std::fprintf(stream, "%s\n", word);
    std::fclose(stream);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::string word = argc > 1 ? argv[1] : "started";
    if (word == "record" && argc == 5)
        return record(argv[2], std::atoi(argv[3]), std::atoi(argv[4]));
    const bool isForEngine = word == "activate" || word == "close" || word == "stray" || word == "quit";
    if (!isForEngine)
        return note(word.c_str());
    const HWND engine = FindWindowW(L"RadialOverlayMain", nullptr);
    if (engine == nullptr)
        return noEngine;
    if (word == "activate" && argc == 3)
        return activate(engine, argv[2]);
    if (word == "stray")
        return sendStrays(engine);
    const DWORD thread = GetWindowThreadProcessId(engine, nullptr);
    const BOOL isDone = word == "close" ? EnumThreadWindows(thread, closeWindow, 0)
                                        : PostThreadMessageW(thread, WM_QUIT, 0, 0);
    return isDone != 0 ? 0 : noEngine;
}
