// What the X server's other clients and the keyboard's layouts do around our windows.

#include "contract_test.h"
#include "platform/hot_key.h"
#include "platform/injection.h"
#include "platform/keyboard_layout.h"
#include "platform/message_box.h"
#include "platform/overlay_window.h"
#include "platform/pointer.h"
#include "platform/threads.h"

#include "platform/linux/connection.h"
#include "platform/linux/key_positions.h"
#include "platform/linux/raw_keys.h"

#include <atomic>
#include <cstdlib>

namespace {

class LinuxDesktop : public ContractTest {
protected:
    ~LinuxDesktop() override {
        useLayout("us", 0);
        XCloseDisplay(other);
    }

    Atom atom(const char* name) { return XInternAtom(other, name, 0); }

    /// XScreenSaver's way.
    void setSaverProperty(const char* word) {
        const unsigned long values[] = {atom(word), 1'700'000'000, 1};
        XChangeProperty(other, root, atom("_SCREENSAVER_STATUS"), XA_INTEGER, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(values), 3);
        XFlush(other);
    }

    void setMonitor(const char* name, int x, int width) {
        const XOwned<XRRMonitorInfo> monitor(XRRAllocateMonitor(other, 0));
        monitor->name = atom(name);
        monitor->x = x;
        monitor->width = width;
        monitor->height = 800;
        monitor->mwidth = monitor->mheight = 200;
        XRRSetMonitor(other, root, monitor.get());
        XFlush(other);
    }

    /// Whether the window manager has a window whose title begins so.
    bool isTitled(const std::string& beginning) {
        const std::string command =
            "export LC_ALL=C.UTF-8; xprop -root _NET_CLIENT_LIST | grep -o '0x[0-9a-f]*' | "
            "xargs -I@ xprop -id @ _NET_WM_NAME | grep -qF '= \"" +
            beginning + "'";
        return std::system(command.c_str()) == 0;
    }

    /// setxkbmap's words; the group is locked as a layout switch would.
    static void useLayout(const std::string& words, int group) {
        ASSERT_EQ(std::system(("setxkbmap -layout " + words).c_str()), 0);
        XkbLockGroup(ownerDisplay(), XkbUseCoreKbd, static_cast<unsigned>(group));
        // Xlib's copy of the map follows when the loop has read of the change.
        const std::shared_ptr<Display> fresh(XOpenDisplay(nullptr), XCloseDisplay);
        const KeyCode probe = 54; // C on American keyboards
        const KeySym expected = XkbKeycodeToKeysym(fresh.get(), probe, group, 0);
        EXPECT_TRUE(
            pumpUntil([&] { return XkbKeycodeToKeysym(ownerDisplay(), probe, group, 0) == expected; }));
    }

    /// The keysym that the key found for `character` gives, with the modifiers that were found for it.
    static KeySym pressedFor(char16_t character, int group) {
        const std::uint16_t found = virtualKeyOfCharacter(character);
        const int level = (found >> 8 & 1) + ((found >> 8 & 6) == 6 ? 2 : 0);
        const KeyCode code = keycodeOfVirtualKey(ownerDisplay(), found & 0xFF);
        const KeySym keysym = XkbKeycodeToKeysym(ownerDisplay(), code, group, level);
        return keysym != NoSymbol ? keysym : XkbKeycodeToKeysym(ownerDisplay(), code, 0, level);
    }

    Display* const other = XOpenDisplay(nullptr);
    const Window root = DefaultRootWindow(other);
};

TEST_F(LinuxDesktop, ALockOfXScreenSaverCountsAndADarkScreenDoesNot) {
    setSaverProperty("LOCK");
    EXPECT_TRUE(pumpUntil([] { return heard.lockChanges == std::vector<bool>{true}; }));
    setSaverProperty("BLANK");
    EXPECT_TRUE(pumpUntil([] { return heard.lockChanges == std::vector<bool>{true, false}; }));
}

TEST_F(LinuxDesktop, AChangeOfTheMonitorsIsToldOnceHoweverManyEventsItMakes) {
    setMonitor("left", 0, 640);
    setMonitor("right", 640, 640);
    EXPECT_TRUE(pumpUntil([] { return heard.monitorChanges == 1; }));
    setMonitor("left", 0, 640); // as it is
    for (const char* const name : {"right", "left"})
        XRRDeleteMonitor(other, root, atom(name));
    XFlush(other);
    EXPECT_TRUE(pumpUntil([] { return heard.monitorChanges == 2; }));
}

TEST_F(LinuxDesktop, ACursorThatAnotherProgramMovesDuringACaptureComesBack) {
    beginCapture(overRecorder);
    XWarpPointer(other, noXid, root, 0, 0, 0, 0, 20, 30);
    XSync(other, 0);
    EXPECT_NE(cursorPosition(), overRecorder);
    EXPECT_TRUE(pumpUntil([] { return cursorPosition() == overRecorder; }));
}

TEST_F(LinuxDesktop, ADestroyedLayerIsToldOnceAndItsHandleHarmsNothing) {
    static int destroyed;
    destroyed = 0;
    const WindowHandle layer =
        createOverlayWindow(OverlayKind::wheel, 50, 50, {.destroyed = []() noexcept { ++destroyed; }});
    placeOverlayWindow(layer, {0, 0, 50, 50});
    showOverlayWindow(layer);
    XDestroyWindow(other, windowOf(layer));
    XFlush(other);
    EXPECT_TRUE(pumpUntil([] { return destroyed == 1; }));
    showLayer(layer, {});
    hideOverlayWindow(layer);
    EXPECT_EQ(overlayWindowRect(layer), Rect{});
}

TEST_F(LinuxDesktop, WithoutNotificationsAWarningIsAWindowThatBlocksNothing) {
    showWarningBox(u"Rotika", u"Skrót y\njest zajęty.");
    EXPECT_TRUE(pumpUntil([&] { return isTitled("Rotika: Skrót y jest zajęty."); }));
    EXPECT_TRUE(pumpUntil([&] {
        tapInjected(0x0D); // until it has the keyboard
        return !isTitled("Rotika: ");
    }));
}

TEST_F(LinuxDesktop, ACharactersKeyTypesThatCharacterOnEveryLayout) {
    struct Case {
        const char* layout;
        int group;
        std::u16string characters;
        std::vector<KeySym> keysyms;
    };
    const Case cases[] = {
        {"fr", 0, u",?m!1", {XK_comma, XK_question, XK_m, XK_exclam, XK_1}},
        {"us -variant dvorak", 0, u",q/", {XK_comma, XK_q, XK_slash}},
        {"de", 0, u"^`\u00B4-", {XK_dead_circumflex, XK_dead_grave, XK_dead_acute, XK_minus}},
        {"es", 0, u"`", {XK_dead_grave}},
        {"pl -variant qwertz", 0, u"^", {XK_dead_circumflex}},
        {"us,ru", 1, u"!7", {XK_exclam, XK_7}},
    };
    for (const auto& [layout, group, characters, keysyms] : cases) {
        useLayout(layout, group);
        for (std::size_t i = 0; i < keysyms.size(); ++i)
            EXPECT_EQ(pressedFor(characters[i], group), keysyms[i]) << layout << " " << i;
    }
}

TEST_F(LinuxDesktop, AHotKeyMayBeAPedalsAndDoesNotRepeatWhileItIsHeld) {
    constexpr KeyCode pedalF13 = 191; // FK13, whatever the layout puts on it
    ASSERT_TRUE(registerHotKey(mainWindow(), 1, 0x7C));
    XkbSetAutoRepeatRate(other, XkbUseCoreKbd, 100, 30);
    XTestFakeKeyEvent(other, pedalF13, 1, CurrentTime);
    XFlush(other);
    ASSERT_TRUE(pumpUntil([] { return !heard.hotKeys.empty(); }));
    const std::uint64_t pressedAt = watchMs(); // the time that the key is held is what is tested here
    EXPECT_TRUE(pumpUntil([&] { return watchMs() - pressedAt >= 500; }));
    XTestFakeKeyEvent(other, pedalF13, 0, CurrentTime);
    XSync(other, 0);
    EXPECT_EQ(heard.hotKeys, std::vector<int>{1});
    unregisterHotKey(mainWindow(), 1);
}

TEST_F(LinuxDesktop, AKeyThatIsLeftDownStaysDownWhateverTheOwnerHearsWhileItIsPressed) {
    injectKey('W', false, InputMotion::downAndLeft); // from now on the owner listens for taps
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
    injectKey('W', false, InputMotion::up);
}

} // namespace
