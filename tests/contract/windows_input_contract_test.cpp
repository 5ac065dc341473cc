// Capture, guard, keys and hot key where Windows has ways of its own: one state for a button whoever holds
// it, a clip that belongs to everybody, hot keys that take exactly their modifiers.

#include "contract_test.h"
#include "intercepted_call.h"
#include "platform/hot_key.h"
#include "platform/injection.h"
#include "platform/pointer_capture.h"
#include "platform/timer.h"

#include "platform/windows/handles.h"

extern "C" decltype(&SendInput) __imp_SendInput;

namespace {

constexpr Point overRecorder{300, 250};
constexpr std::uint16_t keyX = 0x58;

bool clipIs(const RECT& wanted) {
    RECT clip{};
    GetClipCursor(&clip);
    return EqualRect(&clip, &wanted) != 0;
}

class WindowsInput : public ContractTest {
protected:
    bool hasHeard(const char* event) const { return contains(recorder->events(), event); }
    bool hears(const char* event) const {
        return pumpUntil([&] { return hasHeard(event); });
    }

    /// The middle button as a function holds it.
    bool holdButton() const {
        return pumpUntil([&] {
            SetCursorPos(overRecorder.x, overRecorder.y);
            injectMouseButton(2, InputMotion::downAndLeft);
            return hasHeard("button 2 down");
        });
    }

    const std::unique_ptr<Recorder> recorder = openRecorder(recorderPlace);
};

TEST_F(WindowsInput, ACaptureLeavesTheButtonsAndTheClipOfOthersAndASilentOneIsEndedByTheGuard) {
    constexpr RECT gameClip{120, 120, 480, 380}; // what a game does to keep the cursor in its window
    ASSERT_TRUE(holdButton());
    ClipCursor(&gameClip);
    beginCapture(overRecorder);
    EXPECT_TRUE(clipIs({300, 250, 301, 251}));
    pressRealButton(2);
    releaseRealButton(2);
    moveRealMouse(1, 0); // when it has arrived, so has the release
    EXPECT_TRUE(pumpUntil([] { return heard.motion.x >= 1; }));
    endPointerCapture();
    EXPECT_TRUE(clipIs(gameClip));
    injectMouseButton(1, InputMotion::downUntilReleased);
    injectMouseButton(1, InputMotion::up);
    EXPECT_TRUE(hears("button 1 up"));
    EXPECT_FALSE(hasHeard("button 2 up"));
    injectMouseButton(2, InputMotion::up);
    EXPECT_TRUE(hears("button 2 up"));

    beginCapture(overRecorder);
    EXPECT_TRUE(renewPointerCapture());
    stopWindowTimer(wheelWindow());
    EXPECT_TRUE(pumpUntil([] { return clipIs(gameClip); }));
    heard = {};
    pressRealButton(0);
    releaseRealButton(0);
    PostMessageW(nativeWindow(wheelWindow()), WM_LBUTTONDOWN, MK_LBUTTON, 0);
    EXPECT_TRUE(hears("button 0 up"));
    EXPECT_FALSE(renewPointerCapture());
    EXPECT_EQ(heard.capturePresses + heard.windowPresses, 0);
    constexpr RECT newClip{200, 200, 400, 300};
    ClipCursor(&newClip);
    endPointerCapture();
    EXPECT_TRUE(clipIs(newClip));
    EXPECT_TRUE(renewPointerCapture()) << "there is nothing to be silent about";
    ClipCursor(nullptr);
}

TEST_F(WindowsInput, AHotKeyIsHeardUnderAModifierThatAFunctionHoldsAndNotUnderThePersons) {
    const auto tapX = [] {
        pressRealKey(keyX);
        releaseRealKey(keyX);
    };
    ASSERT_TRUE(registerHotKey(mainWindow(), 1, keyX));
    injectKey(VK_CONTROL, false, InputMotion::downAndLeft);
    EXPECT_TRUE(hears("key 17 down"));
    tapX();
    EXPECT_TRUE(pumpUntil([] { return heard.hotKeys == std::vector<int>{1}; }));
    EXPECT_FALSE(hasHeard("key 88 down"));

    // The person's own Ctrl+X goes to the program, also after a tap that ended what the function held.
    pressRealKey(VK_CONTROL);
    releaseRealKey(VK_CONTROL);
    EXPECT_TRUE(pumpUntil([&] {
        pressRealKey(VK_CONTROL);
        tapX();
        releaseRealKey(VK_CONTROL);
        return hasHeard("key 88 down");
    }));
    unregisterHotKey(mainWindow(), 1);
}

TEST_F(WindowsInput, AReleaseThatTheSystemRefusesComesLaterAndNotAfterANewPress) {
    ASSERT_TRUE(holdButton());
    for (const std::uint16_t key : {'A', 'B'})
        injectKey(key, false, InputMotion::downUntilReleased);
    ASSERT_TRUE(hears("key 66 down"));
    const auto system = intercept(
        __imp_SendInput, +[](UINT, LPINPUT, int) -> UINT { return 0; });
    for (const std::uint16_t key : {'A', 'B'})
        injectKey(key, false, InputMotion::up);
    injectMouseButton(2, InputMotion::up);
    injectKey('A', false, InputMotion::downUntilReleased);
    for (const std::uint16_t key : {'B', 'C'}) {
        injectKey(key, false, InputMotion::downUntilReleased);
        injectKey(key, false, InputMotion::up);
    }
    keybd_event('C', 0, 0, 0); // the person's, who alone has pressed it
    intercept(__imp_SendInput, system);
    EXPECT_TRUE(hears("button 2 up") && hears("key 66 up"));
    EXPECT_FALSE(hasHeard("key 65 up") || hasHeard("key 67 up"));
    keybd_event('C', 0, KEYEVENTF_KEYUP, 0);
    injectKey('A', false, InputMotion::up);
    EXPECT_TRUE(hears("key 65 up"));
}

KBDLLHOOKSTRUCT hooked;

TEST_F(WindowsInput, KeysHaveTheScanCodesOfTheirPlaces) {
    const auto note = [](int code, WPARAM message, LPARAM event) {
        hooked = *reinterpret_cast<const KBDLLHOOKSTRUCT*>(event);
        return CallNextHookEx(nullptr, code, message, event);
    };
    const HookHandle hook(SetWindowsHookExW(WH_KEYBOARD_LL, note, moduleInstance(), 0));
    struct Case {
        std::uint16_t key;
        DWORD scanCode, extended;
    };
    for (const auto& [key, scanCode, extended] :
         {Case{'A', 0x1E, 0}, Case{VK_SNAPSHOT, 0x37, 1}, Case{VK_RMENU, 0x38, 1}, Case{VK_RIGHT, 0x4D, 1}}) {
        injectKey(key, extended != 0, InputMotion::downUntilReleased);
        injectKey(key, extended != 0, InputMotion::up);
        EXPECT_TRUE(pumpUntil([&] { return hooked.vkCode == key && (hooked.flags & LLKHF_UP) != 0; })) << key;
        EXPECT_EQ(hooked.scanCode, scanCode) << key;
        EXPECT_EQ(hooked.flags & LLKHF_EXTENDED, extended) << key;
    }
}

} // namespace
