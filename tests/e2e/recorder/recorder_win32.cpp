// The same as recorder_x11.cpp for Windows.

#include "recorder/pattern.h"
#include "recorder/record.h"

#include <windows.h>
#include <windowsx.h>

#include <map>
#include <memory>

namespace {

std::unique_ptr<EventLog> eventLog;
RecorderArguments arguments;

const char* buttonName(UINT message, WPARAM wParam) {
    switch (message) {
    case WM_LBUTTONDOWN:
    case WM_LBUTTONUP:
        return "left";
    case WM_MBUTTONDOWN:
    case WM_MBUTTONUP:
        return "middle";
    case WM_RBUTTONDOWN:
    case WM_RBUTTONUP:
        return "right";
    default:
        return GET_XBUTTON_WPARAM(wParam) == XBUTTON1 ? "side1" : "side2";
    }
}

/// X11's name of what the key types without shift on a plain keyboard.
std::string keyName(WPARAM key) {
    static const std::map<WPARAM, const char*> names = {{VK_SPACE, "space"},
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
    if (key >= '0' && key <= '9')
        return {static_cast<char>(key)};
    return "-";
}

void writeEvent(const char* kind, const std::string& name) {
    const DWORD place = GetMessagePos();
    const auto time = static_cast<unsigned long>(GetMessageTime());
    eventLog->write(time, kind, name, GET_X_LPARAM(place), GET_Y_LPARAM(place));
}

void writeKey(UINT message, WPARAM key, LPARAM details) {
    const bool wasDown = (details & 1 << 30) != 0;
    if (message == WM_KEYUP || message == WM_SYSKEYUP)
        writeEvent("key-up", keyName(key));
    else
        writeEvent(wasDown ? "key-repeat" : "key-down", keyName(key));
}

void paintPattern(HWND window) {
    PAINTSTRUCT paint;
    const HDC context = BeginPaint(window, &paint);
    for (int y = 0; y < arguments.height; y += patternCell) {
        for (int x = 0; x < arguments.width; x += patternCell) {
            const PatternColor color = patternColor(arguments.left + x, arguments.top + y);
            const RECT cell{x, y, x + patternCell, y + patternCell};
            const HBRUSH brush = CreateSolidBrush(RGB(color.red, color.green, color.blue));
            FillRect(context, &cell, brush);
            DeleteObject(brush);
        }
    }
    EndPaint(window, &paint);
}

LRESULT CALLBACK recordMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_PAINT:
        paintPattern(window);
        return 0;
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
    case WM_KEYUP:
    case WM_SYSKEYUP:
        writeKey(message, wParam, lParam);
        return 0;
    case WM_LBUTTONDOWN:
    case WM_MBUTTONDOWN:
    case WM_RBUTTONDOWN:
    case WM_XBUTTONDOWN:
        writeEvent("button-down", buttonName(message, wParam));
        return 0;
    case WM_LBUTTONUP:
    case WM_MBUTTONUP:
    case WM_RBUTTONUP:
    case WM_XBUTTONUP:
        writeEvent("button-up", buttonName(message, wParam));
        return 0;
    case WM_MOUSEMOVE:
        writeEvent("motion", "-");
        return 0;
    case WM_SETFOCUS:
        writeEvent("focus-in", "-");
        return 0;
    case WM_KILLFOCUS:
        writeEvent("focus-out", "-");
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

HWND makeWindow() {
    WNDCLASSW description{};
    description.lpfnWndProc = recordMessage;
    description.hInstance = GetModuleHandleW(nullptr);
    description.lpszClassName = L"Recorder";
    description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    RegisterClassW(&description);
    return CreateWindowExW(0, L"Recorder", L"recorder", WS_POPUP, arguments.left, arguments.top,
                           arguments.width, arguments.height, nullptr, nullptr, description.hInstance,
                           nullptr);
}

} // namespace

int main(int argc, char** argv) {
    if (noteOpening(argc, argv))
        return 0;
    arguments = RecorderArguments::parse(argc, argv);
    SetProcessDPIAware();
    eventLog = std::make_unique<EventLog>(arguments.logFile);
    const HWND window = makeWindow();
    ShowWindow(window, SW_SHOW);
    SetForegroundWindow(window);
    eventLog->write(0, "ready");
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return 0;
}
