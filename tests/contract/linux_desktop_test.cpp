// What the X server's other clients and the keyboard's layouts do around our windows.

#include "contract_test.h"
#include "platform/hot_key.h"
#include "platform/injection.h"
#include "platform/keyboard_layout.h"
#include "platform/pointer.h"
#include "platform/threads.h"

#include "platform/linux/connection.h"
#include "platform/linux/key_positions.h"
#include "platform/linux/raw_keys.h"

#include <atomic>
#include <cstdlib>

namespace {

using LinuxDesktop = ContractTest;

const std::unique_ptr<Display, int (*)(Display*)> other(XOpenDisplay(nullptr), XCloseDisplay);

TEST_F(LinuxDesktop, ACursorThatAnotherProgramMovesDuringACaptureComesBack) {
    beginCapture(overRecorder);
    XWarpPointer(other.get(), noXid, DefaultRootWindow(other.get()), 0, 0, 0, 0, 20, 30);
    XSync(other.get(), 0);
    EXPECT_NE(cursorPosition(), overRecorder);
    EXPECT_TRUE(pumpUntil([] { return cursorPosition() == overRecorder; }));
}

/// The keysym that the key found for `character` gives, with the modifiers that were found for it.
KeySym pressedFor(char16_t character, int group) {
    const std::uint16_t found = virtualKeyOfCharacter(character);
    const int level = (found >> 8 & 1) + ((found >> 8 & 6) == 6 ? 2 : 0);
    const KeyCode code = keycodeOfVirtualKey(ownerDisplay(), found & 0xFF);
    const KeySym keysym = XkbKeycodeToKeysym(ownerDisplay(), code, group, level);
    return keysym != NoSymbol ? keysym : XkbKeycodeToKeysym(ownerDisplay(), code, 0, level);
}

TEST_F(LinuxDesktop, ASideButtonIsNotTheScrollWheel) {
    const auto recorder = openRecorder(recorderPlace);
    setCursorPosition(overRecorder);
    clickInjected(3);
    EXPECT_TRUE(recorder->hears("button 4 up"));
}

/// Xlib's copy of the layout follows when the loop has read of the change.
TEST_F(LinuxDesktop, ACharactersKeyTypesThatCharacterOnEveryLayout) {
    const std::tuple<const char*, int, std::u16string, std::vector<KeySym>> cases[] = {
        {"fr", 0, u",?m!1", {XK_comma, XK_question, XK_m, XK_exclam, XK_1}},
        {"us -variant dvorak", 0, u",q/", {XK_comma, XK_q, XK_slash}},
        {"de", 0, u"^`\u00B4-", {XK_dead_circumflex, XK_dead_grave, XK_dead_acute, XK_minus}},
        {"es", 0, u"`", {XK_dead_grave}},
        {"pl -variant qwertz", 0, u"^", {XK_dead_circumflex}},
        {"us,ru", 1, u"!7", {XK_exclam, XK_7}},
        {"us", 0, u"x", {XK_x}},
    };
    for (const auto& [layout, group, characters, keysyms] : cases) {
        ASSERT_EQ(std::system((std::string("setxkbmap -layout ") + layout).c_str()), 0);
        XkbLockGroup(ownerDisplay(), XkbUseCoreKbd, static_cast<unsigned>(group)); // as a layout switch would
        for (std::size_t i = 0; i < keysyms.size(); ++i)
            EXPECT_TRUE(pumpUntil([sign = characters[i], inGroup = group, &wanted = keysyms[i]] {
                return pressedFor(sign, inGroup) == wanted;
            })) << layout
                << " " << i;
    }
}

TEST_F(LinuxDesktop, AHotKeyMayBeAPedalsAndDoesNotRepeatWhileItIsHeld) {
    const auto recorder = openRecorder(recorderPlace);
    constexpr KeyCode pedalF13 = 191; // FK13, whatever the layout puts on it
    ASSERT_TRUE(registerHotKey(mainWindow(), 1, 0x7C));
    XkbSetAutoRepeatRate(other.get(), XkbUseCoreKbd, 100, 30);
    XTestFakeKeyEvent(other.get(), pedalF13, 1, CurrentTime);
    XFlush(other.get());
    ASSERT_TRUE(pumpUntil([] { return !heard.hotKeys.empty(); }));
    tapRealKey('Q');
    EXPECT_TRUE(recorder->hears("key 81 up")) << "the keyboard is given back at once";
    const std::uint64_t pressedAt = watchMs(); // the time that the key is held is what is tested here
    EXPECT_TRUE(pumpUntil([&] { return watchMs() - pressedAt >= 500; }));
    XTestFakeKeyEvent(other.get(), pedalF13, 0, CurrentTime);
    XSync(other.get(), 0);
    EXPECT_EQ(heard.hotKeys, std::vector<int>{1});
    unregisterHotKey(mainWindow(), 1);
}

bool repeats(std::uint16_t virtualKey) {
    XKeyboardState keyboard{};
    XGetKeyboardControl(other.get(), &keyboard);
    const KeyCode code = keycodeOfVirtualKey(ownerDisplay(), virtualKey);
    return (keyboard.auto_repeats[code / 8] >> code % 8 & 1) != 0;
}

TEST_F(LinuxDesktop, AKeyThatIsLeftDownStaysDownAndRepeatsNothing) {
    injectKey('W', false, InputMotion::downAndLeft); // from now on the owner listens for taps
    EXPECT_TRUE(pumpUntil([] { return !repeats('W'); }));
    std::atomic<bool> isPressed;
    for (int round = 0; round < 150; ++round) {
        isPressed = false;
        ASSERT_TRUE(startDetachedThread([&] {
            injectKey(0x11, false, InputMotion::downAndLeft);
            isPressed = true;
        }));
        ASSERT_TRUE(pumpUntil([&] { return isPressed.load(); }));
        const std::uint64_t pressedAt = watchMs();
        ASSERT_TRUE(pumpUntil([&] { return watchMs() > pressedAt + 5; }));
        ASSERT_TRUE(isKeyDown(ownerDisplay(), keycodeOfVirtualKey(ownerDisplay(), 0x11))) << round;
        injectKey(0x11, false, InputMotion::up);
    }
    tapRealKey('W');
    EXPECT_TRUE(pumpUntil([] { return repeats('W'); })) << "let go of by a tap of the person";
}

} // namespace
