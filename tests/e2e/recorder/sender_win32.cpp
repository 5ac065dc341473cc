// What another program of the same desktop can say to the engine's main window:
//   sender activate FILE   take the wheels of this file; the answer is the exit status, 1 for yes
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

} // namespace

int main(int argc, char** argv) {
    const HWND engine = FindWindowW(L"RadialOverlayMain", nullptr);
    if (engine == nullptr || argc < 2)
        return noEngine;
    if (std::strcmp(argv[1], "activate") == 0 && argc == 3)
        return activate(engine, std::wstring(argv[2], argv[2] + std::strlen(argv[2])));
    const DWORD thread = GetWindowThreadProcessId(engine, nullptr);
    return PostThreadMessageW(thread, WM_QUIT, 0, 0) != 0 ? 0 : noEngine;
}
