// Capture, guard and hot key where Windows has ways of its own: one state for a button whoever holds it, a
// clip that belongs to everybody, hot keys that take exactly their modifiers.

#include "contract_test.h"
#include "intercepted_call.h"
#include "platform/hot_key.h"
#include "platform/injection.h"
#include "platform/pointer_capture.h"
#include "platform/timer.h"

#include "platform/windows/handles.h"

#include <gtest/gtest.h>
#include <tlhelp32.h>

#include <optional>

extern "C" decltype(&SendInput) __imp_SendInput;

namespace {

constexpr Point overRecorder{300, 250};
constexpr std::uint16_t keyX = 0x58;

/// What a game does to keep the cursor in its window.
constexpr RECT gameClip{120, 120, 480, 380};

bool clipIs(const RECT& wanted) {
    RECT clip{};
    GetClipCursor(&clip);
    return EqualRect(&clip, &wanted) != 0;
}

void killOwnGuard() {
    const KernelHandle processes = fileHandle(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    int killed = 0;
    for (BOOL more = Process32FirstW(processes.get(), &entry); more != 0;
         more = Process32NextW(processes.get(), &entry)) {
        if (entry.th32ParentProcessID == GetCurrentProcessId() &&
            std::wstring(entry.szExeFile) == L"rotika-guard.exe") {
            const KernelHandle guard(OpenProcess(PROCESS_TERMINATE, FALSE, entry.th32ProcessID));
            killed += TerminateProcess(guard.get(), 1) != 0 ? 1 : 0;
        }
    }
    EXPECT_EQ(killed, 1);
}

class WindowsInput : public ContractTest {
protected:
    void TearDown() override {
        ClipCursor(nullptr);
        ContractTest::TearDown();
    }

    void tapX() {
        playRealKey(keyX, true);
        playRealKey(keyX, false);
    }
};

TEST_F(WindowsInput, AClickDuringTheCaptureDoesNotLetGoOfAButtonThatAFunctionHolds) {
    const auto recorder = openRecorder(recorderPlace);
    ASSERT_TRUE(pumpUntil([&] {
        SetCursorPos(overRecorder.x, overRecorder.y);
        injectMouseButton(2, InputMotion::downAndLeft);
        return contains(recorder->events(), "button 2 down");
    }));
    beginCapture(overRecorder);
    playRealButton(2, true);
    playRealButton(2, false);
    moveRealMouse(1, 0); // when it has arrived, so has the release
    EXPECT_TRUE(pumpUntil([] { return heard.motion.x >= 1; }));
    endPointerCapture();
    injectMouseButton(1, InputMotion::downUntilReleased);
    injectMouseButton(1, InputMotion::up);
    EXPECT_TRUE(pumpUntil([&] { return contains(recorder->events(), "button 1 up"); }));
    EXPECT_FALSE(contains(recorder->events(), "button 2 up"));
    injectMouseButton(2, InputMotion::up);
    EXPECT_TRUE(pumpUntil([&] { return contains(recorder->events(), "button 2 up"); }));
}

TEST_F(WindowsInput, TheEndPutsTheClipBackThatStoodBeforeButNotOverANewOne) {
    ClipCursor(&gameClip);
    beginCapture(overRecorder);
    EXPECT_TRUE(clipIs({300, 250, 301, 251}));
    endPointerCapture();
    EXPECT_TRUE(clipIs(gameClip));

    constexpr RECT newClip{200, 200, 400, 300};
    beginCapture(overRecorder);
    ClipCursor(&newClip);
    endPointerCapture();
    EXPECT_TRUE(clipIs(newClip));
}

TEST_F(WindowsInput, ASilentThreadsMouseIsGivenBackEvenByAGuardThatHadToBeReplaced) {
    const auto recorder = openRecorder(recorderPlace);
    ClipCursor(&gameClip);
    beginCapture(overRecorder);
    EXPECT_TRUE(renewPointerCapture());
    stopWindowTimer(wheelWindow());
    killOwnGuard();
    EXPECT_TRUE(pumpUntil([] { return clipIs(gameClip); }));

    playRealButton(2, true);
    playRealButton(2, false);
    moveRealMouse(3, 2);
    PostMessageW(nativeWindow(wheelWindow()), WM_LBUTTONDOWN, MK_LBUTTON, 0);
    EXPECT_TRUE(pumpUntil([&] { return contains(recorder->events(), "button 2 up"); }));
    EXPECT_FALSE(renewPointerCapture());
    EXPECT_EQ(heard.capturePresses + heard.windowPresses, 0);
    EXPECT_EQ(heard.motion, Point{});
    endPointerCapture();
    EXPECT_TRUE(clipIs(gameClip));
    EXPECT_TRUE(renewPointerCapture()) << "there is nothing to be silent about";
}

TEST_F(WindowsInput, AHotKeyIsHeardUnderAModifierThatAFunctionHoldsAndNotUnderThePersons) {
    const auto recorder = openRecorder(recorderPlace);
    ASSERT_TRUE(registerHotKey(mainWindow(), 1, keyX));
    injectKey(VK_CONTROL, false, InputMotion::downAndLeft);
    EXPECT_TRUE(pumpUntil([&] { return contains(recorder->events(), "key 17 down"); }));
    tapX();
    EXPECT_TRUE(pumpUntil([] { return heard.hotKeys == std::vector<int>{1}; }));
    injectKey(VK_CONTROL, false, InputMotion::up);
    EXPECT_TRUE(pumpUntil([&] { return contains(recorder->events(), "key 17 up"); }));
    EXPECT_FALSE(contains(recorder->events(), "key 88 down"));

    // The person's own Ctrl+X goes to the program, also after a tap that ended what the function held.
    injectKey(VK_CONTROL, false, InputMotion::downAndLeft);
    playRealKey(VK_CONTROL, true);
    playRealKey(VK_CONTROL, false);
    EXPECT_TRUE(pumpUntil([&] {
        playRealKey(VK_CONTROL, true);
        tapX();
        playRealKey(VK_CONTROL, false);
        return contains(recorder->events(), "key 88 down");
    }));
    const std::size_t heardBefore = heard.hotKeys.size();
    tapX();
    EXPECT_TRUE(pumpUntil([&] { return heard.hotKeys.size() == heardBefore + 1; }));
    unregisterHotKey(mainWindow(), 1);
}

UINT WINAPI refuseInput(UINT, LPINPUT, int) {
    return 0;
}

TEST_F(WindowsInput, AReleaseThatTheSystemRefusesComesLaterAndNotAfterANewPress) {
    const auto recorder = openRecorder(recorderPlace);
    ASSERT_TRUE(pumpUntil([&] {
        SetCursorPos(overRecorder.x, overRecorder.y);
        injectMouseButton(2, InputMotion::downAndLeft);
        injectKey('A', false, InputMotion::downUntilReleased);
        injectKey('B', false, InputMotion::downUntilReleased);
        const auto events = recorder->events();
        return contains(events, "button 2 down") && contains(events, "key 66 down");
    }));
    {
        const InterceptedCall<decltype(&SendInput)> refused(__imp_SendInput, refuseInput);
        for (const std::uint16_t key : {'A', 'B'}) {
            injectKey(key, false, InputMotion::up);
        }
        injectMouseButton(2, InputMotion::up);
        injectKey('A', false, InputMotion::downUntilReleased);
        for (const std::uint16_t key : {'B', 'C'}) {
            injectKey(key, false, InputMotion::downUntilReleased);
            injectKey(key, false, InputMotion::up);
        }
        keybd_event('C', 0, 0, 0); // the person's, who alone has pressed it
    }
    EXPECT_TRUE(pumpUntil([&] {
        const auto events = recorder->events();
        return contains(events, "button 2 up") && contains(events, "key 66 up");
    }));
    EXPECT_FALSE(contains(recorder->events(), "key 65 up"));
    EXPECT_FALSE(contains(recorder->events(), "key 67 up"));
    keybd_event('C', 0, KEYEVENTF_KEYUP, 0);
    injectKey('A', false, InputMotion::up);
    EXPECT_TRUE(pumpUntil([&] { return contains(recorder->events(), "key 65 up"); }));
}

KBDLLHOOKSTRUCT hooked;

LRESULT CALLBACK noteKeyEvent(int code, WPARAM message, LPARAM event) {
    hooked = *reinterpret_cast<const KBDLLHOOKSTRUCT*>(event);
    return CallNextHookEx(nullptr, code, message, event);
}

TEST_F(WindowsInput, PrintScreenHasTheScanCodeOfItsKey) {
    const HookHandle hook(SetWindowsHookExW(WH_KEYBOARD_LL, noteKeyEvent, GetModuleHandleW(nullptr), 0));
    injectKey(VK_SNAPSHOT, true, InputMotion::downUntilReleased);
    injectKey(VK_SNAPSHOT, true, InputMotion::up);
    EXPECT_TRUE(pumpUntil([] { return (hooked.flags & LLKHF_UP) != 0; }));
    EXPECT_EQ(hooked.scanCode, 0x37U);
    EXPECT_TRUE(hooked.flags & LLKHF_EXTENDED);
}

} // namespace
