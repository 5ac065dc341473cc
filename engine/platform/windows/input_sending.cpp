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

/// For Print Screen the system returns the code that the key sends with Alt, which does not exist as an
/// extended key.
WORD scanCodeOf(WORD virtualKey) {
    constexpr WORD printScreenCode = 0x37;
    return virtualKey == VK_SNAPSHOT ? printScreenCode
                                     : static_cast<WORD>(MapVirtualKeyW(virtualKey, MAPVK_VK_TO_VSC));
}

INPUT keyEvent(const GuardRecord& key, bool down) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    // The virtual key is set too: from a scan code alone Wine produces neither key nor character.
    input.ki.wVk = static_cast<WORD>(key.code);
    input.ki.wScan = scanCodeOf(input.ki.wVk);
    input.ki.dwFlags = KEYEVENTF_SCANCODE;
    input.ki.dwExtraInfo = extraInfoOfOurKeys;
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

/// False if the system refused it.
bool send(const GuardRecord& thing, bool down) {
    INPUT input = isKey(thing) ? keyEvent(thing, down) : buttonEvent(thing, down);
    return SendInput(1, &input, sizeof(input)) == 1;
}

bool isDown(const GuardRecord& thing) {
    const int virtualKey = isKey(thing) ? static_cast<int>(thing.code) : buttons[thing.code].virtualKey;
    return GetAsyncKeyState(virtualKey) < 0;
}

/// Whether a program with more rights than ours is in front: opening its token is denied.
bool frontIsElevated() {
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
    // Checked first: the press itself may bring such a program to the front.
    const bool isDiscarded = frontIsElevated();
    return canBeSent(thing) && send(thing, true) && !isDiscarded;
}

bool sendRelease(const GuardRecord& thing) {
    return !canBeSent(thing) || (send(thing, false) && !frontIsElevated());
}

bool sendReleaseAgain(const GuardRecord& thing) {
    if (frontIsElevated()) {
        return false;
    }
    // Without a foreground window the desktop is not shown, and its key state cannot be read.
    const bool isUp = GetForegroundWindow() != nullptr && !isDown(thing);
    return isUp || send(thing, false);
}

} // namespace rotika
