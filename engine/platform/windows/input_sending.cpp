#include "platform/windows/input_sending.h"

#include "platform/windows/windows_api.h"

#include <array>

namespace {

struct ButtonFlags {
    DWORD down;
    DWORD up;
    DWORD data;
};

constexpr std::array<ButtonFlags, 5> buttonFlags{{
    {MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP, 0},
    {MOUSEEVENTF_RIGHTDOWN, MOUSEEVENTF_RIGHTUP, 0},
    {MOUSEEVENTF_MIDDLEDOWN, MOUSEEVENTF_MIDDLEUP, 0},
    {MOUSEEVENTF_XDOWN, MOUSEEVENTF_XUP, XBUTTON1},
    {MOUSEEVENTF_XDOWN, MOUSEEVENTF_XUP, XBUTTON2},
}};

} // namespace

void sendKeyEvent(std::uint16_t virtualKey, bool extended, bool down) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    // The virtual key travels beside the scan code: from a scan code alone Wine makes neither key nor
    // character.
    input.ki.wVk = virtualKey;
    input.ki.wScan = static_cast<WORD>(MapVirtualKeyW(virtualKey, MAPVK_VK_TO_VSC));
    input.ki.dwFlags = KEYEVENTF_SCANCODE;
    if (extended) {
        input.ki.dwFlags |= KEYEVENTF_EXTENDEDKEY;
    }
    if (!down) {
        input.ki.dwFlags |= KEYEVENTF_KEYUP;
    }
    SendInput(1, &input, sizeof(input));
}

void sendButtonEvent(std::uint32_t button, bool down) {
    if (button >= buttonFlags.size()) {
        return;
    }
    const ButtonFlags& flags = buttonFlags[button];
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = down ? flags.down : flags.up;
    input.mi.mouseData = flags.data;
    SendInput(1, &input, sizeof(input));
}
