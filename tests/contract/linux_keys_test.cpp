#include "contract_test.h"
#include "platform/clock.h"
#include "platform/hot_key.h"
#include "platform/injection.h"
#include "platform/keyboard_layout.h"
#include "platform/threads.h"

#include "platform/linux/connection.h"
#include "platform/linux/key_positions.h"
#include "platform/linux/raw_keys.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <string>

namespace {

class LinuxKeys : public ContractTest {
protected:
    ~LinuxKeys() override { useLayout("us"); }

    /// The first word is setxkbmap's layout; the group is locked as a layout switch would.
    static void useLayout(const std::string& words, unsigned int group = 0) {
        ASSERT_EQ(std::system(("setxkbmap -layout " + words).c_str()), 0);
        XkbLockGroup(ownerDisplay(), XkbUseCoreKbd, group);
        // Xlib's copy of the map follows when the loop has read of the change.
        Display* fresh = XOpenDisplay(nullptr);
        const KeyCode probe = 54; // C on American keyboards
        const KeySym expected = XkbKeycodeToKeysym(fresh, probe, static_cast<int>(group), 0);
        EXPECT_TRUE(pumpUntil([&] {
            return XkbKeycodeToKeysym(ownerDisplay(), probe, static_cast<int>(group), 0) == expected;
        }));
        XCloseDisplay(fresh);
    }

    /// The keysym that a press of the key found for `character` gives, with the modifiers that were found for
    /// it.
    static KeySym pressedFor(char16_t character, int group) {
        const std::uint16_t found = virtualKeyOfCharacter(character);
        if (found == noVirtualKey)
            return NoSymbol;
        const int level = (found >> 8 & 1) + ((found >> 8 & 6) == 6 ? 2 : 0);
        const KeyCode code = keycodeOfVirtualKey(ownerDisplay(), found & 0xFF);
        const KeySym keysym = XkbKeycodeToKeysym(ownerDisplay(), code, group, level);
        return keysym != NoSymbol ? keysym : XkbKeycodeToKeysym(ownerDisplay(), code, 0, level);
    }
};

TEST_F(LinuxKeys, ACharactersKeyTypesThatCharacterOnEveryLayout) {
    struct Case {
        const char* layout;
        unsigned int group;
        char16_t character;
        KeySym keysym;
    };
    const Case cases[] = {
        {"fr", 0, u',', XK_comma},
        {"fr", 0, u'?', XK_question},
        {"fr", 0, u'm', XK_m},
        {"fr", 0, u'!', XK_exclam},
        {"fr", 0, u'1', XK_1},
        {"us -variant dvorak", 0, u',', XK_comma},
        {"us -variant dvorak", 0, u'q', XK_q},
        {"us -variant dvorak", 0, u'/', XK_slash},
        {"de", 0, u'^', XK_dead_circumflex},
        {"de", 0, u'`', XK_dead_grave},
        {"de", 0, u'\u00B4', XK_dead_acute},
        {"de", 0, u'-', XK_minus},
        {"es", 0, u'`', XK_dead_grave},
        {"pl -variant qwertz", 0, u'^', XK_dead_circumflex},
        {"us,ru", 1, u'!', XK_exclam},
        {"us,ru", 1, u'7', XK_7},
    };
    for (const auto& [layout, group, character, keysym] : cases) {
        useLayout(layout, group);
        EXPECT_EQ(pressedFor(character, static_cast<int>(group)), keysym)
            << layout << " " << static_cast<int>(character);
    }
}

TEST_F(LinuxKeys, AKeyOfAPedalCanBeTheHotKeyWhateverTheLayoutPutsOnIt) {
    constexpr std::uint16_t f13 = 0x7C;
    constexpr KeyCode pedalF13 = 191; // FK13
    ASSERT_TRUE(registerHotKey(mainWindow(), 1, f13));
    XTestFakeKeyEvent(ownerDisplay(), pedalF13, 1, CurrentTime);
    XTestFakeKeyEvent(ownerDisplay(), pedalF13, 0, CurrentTime);
    EXPECT_TRUE(pumpUntil([] { return !heard.hotKeys.empty(); }));
    unregisterHotKey(mainWindow(), 1);
}

TEST_F(LinuxKeys, AKeyThatIsLeftDownStaysDownWhateverTheOwnerHearsWhileItIsPressed) {
    injectKey(0x57, false, InputMotion::downAndLeft); // W: from now on the owner listens for taps
    static std::atomic<bool> pressed;
    for (int round = 0; round < 150; ++round) {
        pressed = false;
        ASSERT_TRUE(startDetachedThread([] {
            injectKey(0x11, false, InputMotion::downAndLeft);
            pressed = true;
        }));
        ASSERT_TRUE(pumpUntil([] { return pressed.load(); }));
        const std::uint64_t later = tickCount() + 5;
        ASSERT_TRUE(pumpUntil([later] { return tickCount() > later; }));
        ASSERT_TRUE(isKeyDown(ownerDisplay(), keycodeOfVirtualKey(ownerDisplay(), 0x11))) << round;
        injectKey(0x11, false, InputMotion::up);
    }
    injectKey(0x57, false, InputMotion::up);
}

} // namespace
