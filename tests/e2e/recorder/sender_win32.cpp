// What another program of the same desktop can say to the engine's main window:
//   sender activate FILE   take the wheels of this file; the answer is the exit status, 1 for yes
//   sender close           asks all windows to close, as whoever ends a program by its windows does
//   sender stray           private messages that no worker of the engine has posted
//   sender quit            end in good order

#include <windows.h>

#include <cstring>
#include <string>

namespace {

constexpr int noEngine = 3;
constexpr ULONG_PTR activateWheelFile = 1;

int activate(HWND engine, const std::wstring& file) {
    COPYDATASTRUCT data{};
    data.dwData = activateWheelFile;
    data.cbData = static_cast<DWORD>((file.size() + 1) * sizeof(wchar_t));
    data.lpData = const_cast<wchar_t*>(file.c_str());
    return static_cast<int>(SendMessageW(engine, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data)));
}

BOOL CALLBACK closeWindow(HWND window, LPARAM) {
    return PostMessageW(window, WM_CLOSE, 0, 0);
}

int closeWindows(HWND engine) {
    const DWORD thread = GetWindowThreadProcessId(engine, nullptr);
    return EnumThreadWindows(thread, closeWindow, 0) != 0 ? 0 : noEngine;
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

} // namespace

int main(int argc, char** argv) {
    const HWND engine = FindWindowW(L"RadialOverlayMain", nullptr);
    if (engine == nullptr || argc < 2)
        return noEngine;
    if (std::strcmp(argv[1], "activate") == 0 && argc == 3)
        return activate(engine, std::wstring(argv[2], argv[2] + std::strlen(argv[2])));
    if (std::strcmp(argv[1], "close") == 0)
        return closeWindows(engine);
    if (std::strcmp(argv[1], "stray") == 0)
        return sendStrays(engine);
    const DWORD thread = GetWindowThreadProcessId(engine, nullptr);
    return PostThreadMessageW(thread, WM_QUIT, 0, 0) != 0 ? 0 : noEngine;
}
