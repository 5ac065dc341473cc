// The person's mouse and keyboard are xdotool's on the X server beneath Wine, which Wine takes for hardware.

#include "driver.h"
#include "other_process.h"

#include "platform/windows/windows_api.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

void handleMessages() {
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

/// Programs of the host run at their own pace, so each leaves a file behind when it has ended.
void playOnHost(const std::string& xdotoolCommand) {
    static int serial = 0;
    const std::string done = "/tmp/rotika-person-" + std::to_string(GetCurrentProcessId()) + "-" +
                             std::to_string(GetTickCount64()) + "-" + std::to_string(++serial);
    std::string line = "sh -c \"xdotool " + xdotoolCommand + " && : > " + done + "\"";
    std::string hostPath = "Z:" + done;
    STARTUPINFOA startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started{};
    ASSERT_NE(CreateProcessA("Z:\\bin\\sh", line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                             &startup, &started),
              0);
    EXPECT_TRUE(pumpUntil([&] { return GetFileAttributesA(hostPath.c_str()) != INVALID_FILE_ATTRIBUTES; }))
        << xdotoolCommand;
    DeleteFileA(hostPath.c_str());
}

std::string hostButton(std::uint32_t button) {
    constexpr const char* names[] = {"1", "3", "2"};
    return names[button];
}

std::string hostKey(std::uint16_t virtualKey) {
    if (virtualKey == VK_CAPITAL)
        return "Caps_Lock";
    if (virtualKey == VK_CONTROL)
        return "Control_L";
    return std::string(1, static_cast<char>(virtualKey - 'A' + 'a'));
}

// The recorder

void tellButton(std::size_t button, bool down) {
    tellLine("button " + std::to_string(button) + (down ? " down" : " up"));
}

void tellKey(WPARAM virtualKey, LPARAM details, bool down) {
    constexpr LPARAM wasDownBefore = 1 << 30;
    if (down && (details & wasDownBefore) != 0)
        return;
    tellLine("key " + std::to_string(virtualKey) + (down ? " down" : " up"));
}

LRESULT CALLBACK recorderProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    switch (message) {
    case WM_LBUTTONDOWN:
    case WM_LBUTTONUP:
        tellButton(0, message == WM_LBUTTONDOWN);
        return 0;
    case WM_RBUTTONDOWN:
    case WM_RBUTTONUP:
        tellButton(1, message == WM_RBUTTONDOWN);
        return 0;
    case WM_MBUTTONDOWN:
    case WM_MBUTTONUP:
        tellButton(2, message == WM_MBUTTONDOWN);
        return 0;
    case WM_MOUSEWHEEL:
        tellLine("scroll");
        return 0;
    case WM_SETFOCUS:
        tellLine("keyboard");
        return 0;
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
        tellKey(wParam, lParam, true);
        return 0;
    case WM_KEYUP:
    case WM_SYSKEYUP:
        tellKey(wParam, lParam, false);
        return 0;
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

} // namespace

bool pumpUntil(const std::function<bool()>& condition) {
    constexpr ULONGLONG limitMs = 10'000;
    const ULONGLONG startedAt = GetTickCount64();
    while (true) {
        handleMessages();
        if (condition())
            return true;
        if (GetTickCount64() - startedAt > limitMs)
            return false;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 5, QS_ALLINPUT);
    }
}

void moveRealMouse(std::int32_t dx, std::int32_t dy) {
    playOnHost("mousemove_relative -- " + std::to_string(dx) + " " + std::to_string(dy));
}

void pressRealButton(std::uint32_t button) {
    playOnHost("mousedown " + hostButton(button));
}

void releaseRealButton(std::uint32_t button) {
    playOnHost("mouseup " + hostButton(button));
}

void scrollRealWheel() {
    playOnHost("click 4");
}

void pressRealKey(std::uint16_t virtualKey) {
    playOnHost("keydown " + hostKey(virtualKey));
}

void releaseRealKey(std::uint16_t virtualKey) {
    playOnHost("keyup " + hostKey(virtualKey));
}

void playRecorder(const Rect& place) {
    SetProcessDPIAware();
    WNDCLASSW description{};
    description.lpszClassName = L"ContractRecorder";
    description.lpfnWndProc = recorderProcedure;
    description.hInstance = moduleInstance();
    description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    description.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
    RegisterClassW(&description);
    // Without the extended style Wine would keep the popup from the window manager, and so from the keyboard.
    const HWND window = CreateWindowExW(WS_EX_APPWINDOW, description.lpszClassName, L"recorder",
                                        WS_POPUP | WS_VISIBLE, place.left, place.top, place.width(),
                                        place.height(), nullptr, nullptr, moduleInstance(), nullptr);
    SetForegroundWindow(window);
    UpdateWindow(window);
    tellLine("window " + std::to_string(reinterpret_cast<std::uintptr_t>(window)));
    while (true) {
        handleMessages();
        MsgWaitForMultipleObjects(0, nullptr, FALSE, INFINITE, QS_ALLINPUT);
    }
}
