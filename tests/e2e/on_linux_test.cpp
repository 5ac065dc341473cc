// Scenarios that an X server alone has.

#include "recorder/pattern.h"
#include "scenario.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

#include <cmath>
#include <fstream>
#include <sstream>

namespace e2e {

namespace {

using Texts = std::vector<std::string>;

class OnLinux : public Scenario {
protected:
    Stage& oneField(const ScreenSetup& setup = {}) {
        Stage& s = stage(setup);
        s.writeFile("default.json", oneWheelText("", clickActions({"a", "b"})));
        s.startAll();
        s.restPointerAt({300, 300});
        return s;
    }

    /// How many points of the screen are not the recorder's pattern, the wheel's ring left aside.
    int differentOutsideOfRing() {
        const XConnection& eyes = stage().screen.eyes();
        const ScreenPart screen = eyes.look(0, 0, eyes.width(), eyes.height());
        const ScreenPoint centre = stage().wheel.onScreen(layerCentre);
        int different = 0;
        for (int y = 0; y < screen.height; ++y) {
            for (int x = 0; x < screen.width; ++x) {
                const double distance = std::hypot(x + 0.5 - centre.x, y + 0.5 - centre.y);
                const PatternColor pattern = patternColor(x, y);
                const bool isOnRing = distance > 44 && distance < 227;
                if (!isOnRing && !(screen.at(x, y) == PixelColor{pattern.red, pattern.green, pattern.blue}))
                    ++different;
            }
        }
        return different;
    }

    /// As when a mouse is unplugged and plugged in.
    void setMouseEnabled(bool enabled) {
        Display* display = stage().screen.eyes().raw();
        int count = 0;
        XIDeviceInfo* devices = XIQueryDevice(display, XIAllDevices, &count);
        for (int i = 0; i < count; ++i) {
            if (std::string(devices[i].name) != "Xvfb mouse")
                continue;
            unsigned char value = enabled ? 1 : 0;
            XIChangeProperty(display, devices[i].deviceid, XInternAtom(display, "Device Enabled", False),
                             XA_INTEGER, 8, XIPropModeReplace, &value, 1);
        }
        XIFreeDeviceInfo(devices);
        XSync(display, False);
    }
};

TEST_F(OnLinux, AMousePluggedInWhileTheWheelIsOpenIsHeldBackToo) {
    Stage& s = oneField();
    s.openWheel();
    setMouseEnabled(false);
    setMouseEnabled(true);
    waitFor("the mouse being held back again", [&] { return s.target->holdsMouse(s.screen.eyes()); });
    s.choose(fieldPoint(1, 2, 150));
    s.waitUntilWheelIsClosed();
    s.recording.waitForPress("key-up b");
    EXPECT_EQ(s.recording.pressTexts(), (Texts{"key-down b", "key-up b"}));
    EXPECT_EQ(s.screen.eyes().pointer(), (ScreenPoint{300, 300}));
}

TEST_F(OnLinux, AMouseUnpluggedWhileTheWheelIsOpenWorksAfterwards) {
    Stage& s = oneField();
    s.openWheel();
    setMouseEnabled(false);
    s.toggle();
    waitFor("the wheel to close", [&] { return !s.wheelIsOpen(); });
    setMouseEnabled(true);
    s.mouse->move(15, 5);
    waitFor("the real cursor to move", [&] { return !(s.screen.eyes().pointer() == ScreenPoint{300, 300}); });
    s.mouse->click(MouseButton::left);
    s.recording.waitForPress("button-up left");
}

TEST_F(OnLinux, AButtonHeldAcrossTheOpeningIsNotLeftPressed) {
    Stage& s = oneField();
    s.mouse->press(MouseButton::left);
    s.recording.waitForPress("button-down left");
    s.openWheel();
    s.mouse->release(MouseButton::left);
    s.toggle();
    s.waitUntilWheelIsClosed();
    s.recording.waitForPress("button-up left");
    EXPECT_EQ(s.screen.eyes().pressedButtons(), 0U);
    s.mouse->move(5, 5);
    s.mouse->click(MouseButton::left);
    s.recording.waitForPress("button-up left", 2);
}

TEST_F(OnLinux, TheLossOfTheDisplayEndsTheProgramWithAMessage) {
    Stage& s = oneField();
    s.openWheel();
    s.screen.takeAway();
    const std::optional<int> status = s.program.statusWithin(generousLimit);
    ASSERT_TRUE(status.has_value()) << "the program hangs";
    EXPECT_NE(*status, 0);
    EXPECT_LT(*status, 128) << "the program was killed by a signal";
    std::ifstream log(s.screen.folder() / "program.log");
    std::stringstream text;
    text << log.rdbuf();
    EXPECT_NE(text.str(), "");
}

TEST_F(OnLinux, WithoutACompositorTheRestOfTheScreenStaysVisible) {
    Stage& s = oneField({Compositing::off, {}});
    s.openWheel();
    s.aim(fieldPoint(0, 2, 150));
    keepPicture("without-compositor");
    waitFor("the background around the wheel and in its hole", [&] { return differentOutsideOfRing() == 0; });
    waitFor("the field to be lit", [&] {
        return s.wheel.pixel(fieldPoint(0, 2, 75)) == PixelColor{0x34, 0x98, 0xDB};
    });
    s.mouse->click(MouseButton::left);
    s.recording.waitForPress("key-up a");
}

TEST_F(OnLinux, TheWheelOpensOnTheMonitorOfTheRealCursor) {
    Stage& s = oneField({Compositing::on, {"640/170x800/210+0+0", "640/170x800/210+640+0"}});
    for (const int left : {640, 0}) {
        placePointer(s.screen.eyes(), {left + 100, 50});
        s.openWheel();
        EXPECT_EQ(s.wheel.onScreen({0, 0}),
                  (ScreenPoint{left + (640 - layerWidth) / 2, (800 - layerHeight) / 2}));
        s.toggle();
        s.waitUntilWheelIsClosed();
    }
}

TEST_F(OnLinux, AWheelOpenWhileTheCompositorGoesAndComesStaysUsable) {
    Stage& s = oneField();
    s.openWheel();
    s.screen.setCompositing(Compositing::off);
    s.aim(fieldPoint(0, 2, 150));
    waitFor("the field to be lit", [&] {
        return s.wheel.pixel(fieldPoint(0, 2, 75)) == PixelColor{0x34, 0x98, 0xDB};
    });
    const ScreenPoint corner = s.wheel.onScreen({5, 5});
    const PatternColor pattern = patternColor(corner.x, corner.y);
    waitFor("the corner of the layer to be clear", [&] {
        return s.screen.eyes().pixel(corner.x, corner.y) ==
               PixelColor{pattern.red, pattern.green, pattern.blue};
    });
    s.screen.setCompositing(Compositing::on);
    s.aim(fieldPoint(1, 2, 150));
    waitFor("the other field to be lit", [&] {
        return s.wheel.pixel(fieldPoint(1, 2, 75)) == PixelColor{0x34, 0x98, 0xDB};
    });
    s.mouse->click(MouseButton::left);
    s.recording.waitForPress("key-up b");
}

// Wine repeats a hot key even when told not to.
TEST_F(OnLinux, AHeldToggleKeyTogglesOnce) {
    Stage& s = oneField();
    setKeyRepeat(s.screen.eyes(), 100, 30);
    setKey(s.screen.eyes(), toggleKey, true);
    waitFor("the wheel", [&] { return s.wheelIsOpen(); });
    EXPECT_FALSE(holdsWithin(std::chrono::milliseconds(1200), [&] { return !s.wheelIsOpen(); }));
    setKey(s.screen.eyes(), toggleKey, false);
    s.toggle();
    s.waitUntilWheelIsClosed();
}

// Wine loses raw input when a window takes the foreground while it shares another thread's input.
TEST_F(OnLinux, AFieldChosenWithTakeFocusTypesIntoTheProgramInFront) {
    stage().writeFile("config.json", settingsText("\"takeFocus\": true"));
    Stage& s = oneField();
    s.openWheel();
    s.recording.waitForKind("focus-out");
    s.recording.mark();
    s.choose(fieldPoint(1, 2));
    s.recording.waitForKind("focus-in");
    s.recording.waitForPress("key-up b");
    EXPECT_EQ(s.recording.pressTexts(), (Texts{"key-down b", "key-up b"}));
}

TEST_F(OnLinux, AGameThatHoldsThePointerSeesNothingWhileTheWheelIsOpen) {
    Stage& s = oneField();
    Display* game = s.screen.eyes().raw();
    ASSERT_EQ(XGrabPointer(game, DefaultRootWindow(game), False, PointerMotionMask | ButtonPressMask,
                           GrabModeAsync, GrabModeAsync, DefaultRootWindow(game), None, CurrentTime),
              GrabSuccess);
    s.openWheel();
    s.choose(fieldPoint(1, 2, 150));
    s.waitUntilWheelIsClosed();
    s.recording.waitForPress("key-up b");
    XSync(game, False);
    XEvent event;
    while (XCheckMaskEvent(game, PointerMotionMask, &event) != 0)
        EXPECT_EQ((ScreenPoint{event.xmotion.x_root, event.xmotion.y_root}), (ScreenPoint{300, 300}));
    EXPECT_EQ(XCheckMaskEvent(game, ButtonPressMask, &event), 0);
    s.mouse->move(9, 9);
    waitFor("the game to have the mouse again",
            [&] { return XCheckMaskEvent(game, PointerMotionMask, &event) != 0; });
}

} // namespace

} // namespace e2e
