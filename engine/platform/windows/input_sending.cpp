#include "platform/windows/input_sending.h"

#include "platform/windows/handles.h"

#include <array>

namespace rotika {

namespace {

struct Button {
    DWORD down;
    DWORD up;
    DWORD data;
    int virtualKey;
};

constexpr std::array<Button, 5> buttons{{
    {MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP, 0, VK_LBUTTON},
    {MOUSEEVENTF_RIGHTDOWN, MOUSEEVENTF_RIGHTUP, 0, VK_RBUTTON},
    {MOUSEEVENTF_MIDDLEDOWN, MOUSEEVENTF_MIDDLEUP, 0, VK_MBUTTON},
    {MOUSEEVENTF_XDOWN, MOUSEEVENTF_XUP, XBUTTON1, VK_XBUTTON1},
    {MOUSEEVENTF_XDOWN, MOUSEEVENTF_XUP, XBUTTON2, VK_XBUTTON2},
}};

bool isKey(const GuardRecord& thing) {
    return thing.kind == GuardedThing::key;
}

bool isButton(const GuardRecord& thing) {
    return thing.kind == GuardedThing::button && thing.code < buttons.size();
}

/// The system answers for Print Screen with the code that the key sends under Alt, which no keyboard has in
/// the extended block.
WORD scanCodeOf(WORD virtualKey) {
    constexpr WORD printScreenCode = 0x37;
    return virtualKey == VK_SNAPSHOT ? printScreenCode
                                     : static_cast<WORD>(MapVirtualKeyW(virtualKey, MAPVK_VK_TO_VSC));
}

INPUT keyEvent(const GuardRecord& key, bool down) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    // The virtual key travels beside the scan code: from a scan code alone Wine makes neither key nor
    // character.
    input.ki.wVk = static_cast<WORD>(key.code);
    input.ki.wScan = scanCodeOf(input.ki.wVk);
    input.ki.dwFlags = KEYEVENTF_SCANCODE;
    if (key.extended != 0) {
        input.ki.dwFlags |= KEYEVENTF_EXTENDEDKEY;
    }
    if (!down) {
        input.ki.dwFlags |= KEYEVENTF_KEYUP;
    }
    return input;
}

INPUT buttonEvent(const GuardRecord& thing, bool down) {
    const Button& button = buttons[thing.code];
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = down ? button.down : button.up;
    input.mi.mouseData = button.data;
    return input;
}

bool canBeSent(const GuardRecord& thing) {
    return isKey(thing) || isButton(thing);
}

/// Whether the system took it.
bool send(const GuardRecord& thing, bool down) {
    INPUT input = isKey(thing) ? keyEvent(thing, down) : buttonEvent(thing, down);
    return SendInput(1, &input, sizeof(input)) == 1;
}

bool isDown(const GuardRecord& thing) {
    const int virtualKey = isKey(thing) ? static_cast<int>(thing.code) : buttons[thing.code].virtualKey;
    return GetAsyncKeyState(virtualKey) < 0;
}

/// Whether a program with more rights than ours is in front: it does not let us look at them.
bool frontIsOutOfReach() {
    DWORD processId = 0;
    if (GetWindowThreadProcessId(GetForegroundWindow(), &processId) == 0) {
        return false;
    }
    const KernelHandle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId));
    KernelHandle token;
    return (!process || OpenProcessToken(process.get(), TOKEN_QUERY, token.slot()) == 0) &&
           GetLastError() == ERROR_ACCESS_DENIED;
}

} // namespace

bool sendPress(const GuardRecord& thing) {
    // Asked before: the press itself may bring such a program to the front.
    const bool isSwallowed = frontIsOutOfReach();
    return canBeSent(thing) && send(thing, true) && !isSwallowed;
}

bool sendRelease(const GuardRecord& thing) {
    return !canBeSent(thing) || (send(thing, false) && !frontIsOutOfReach());
}

bool sendReleaseAgain(const GuardRecord& thing) {
    if (frontIsOutOfReach()) {
        return false;
    }
    // No window is in front of a desktop that is not shown, and what is down there is not told.
    const bool isUp = GetForegroundWindow() != nullptr && !isDown(thing);
    return isUp || send(thing, false);
}

} // namespace rotika
