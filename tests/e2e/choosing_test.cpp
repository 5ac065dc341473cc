#include "scenario.h"

#include <algorithm>

namespace e2e {

namespace {

using Texts = std::vector<std::string>;

class Choosing : public Scenario {
protected:
    /// Four fields that click a, b, c and d; the real cursor at 500, 300.
    Stage& fourFields() {
        Stage& s = stage();
        s.writeFile("default.json", oneWheelText("Litery", clickActions({"a", "b", "c", "d"})));
        s.startAll();
        s.restPointerAt({500, 300});
        return s;
    }
};

TEST_F(Choosing, AFieldRunsAndTheProgramInFrontSeesNothingElse) {
    Stage& s = fourFields();
    for (const auto& [field, key] : {std::pair{2, "c"}, {0, "a"}, {3, "d"}}) {
        s.recording.mark();
        s.openWheel();
        s.aim(fieldPoint(1, 4));
        s.choose(fieldPoint(field, 4));
        s.waitUntilWheelIsClosed();
        s.recording.waitForPress("key-up " + std::string(key));
        EXPECT_EQ(s.recording.pressTexts(),
                  (Texts{"key-down " + std::string(key), "key-up " + std::string(key)}));
        EXPECT_EQ(s.recording.count("focus-out"), 0);
        EXPECT_EQ(s.screen.eyes().pointer(), (ScreenPoint{500, 300}));
        for (const RecordedEvent& event : s.recording.all()) {
            if (event.kind == "motion") {
                EXPECT_EQ((ScreenPoint{event.x, event.y}), (ScreenPoint{500, 300}));
            }
        }
    }
}

TEST_F(Choosing, KeysGoOnReachingTheProgramInFront) {
    Stage& s = fourFields();
    s.openWheel();
    tapKey(s.screen.eyes(), "q");
    s.recording.waitForPress("key-up q");
    EXPECT_TRUE(s.wheelIsOpen());
    EXPECT_EQ(s.recording.pressTexts(), (Texts{"key-down q", "key-up q"}));
}

TEST_F(Choosing, OnlyALeftPressOnAFieldCloses) {
    Stage& s = fourFields();
    s.openWheel();
    s.mouse->click(MouseButton::left); // in the hole
    s.choose({560, 20});               // beside the ring; with one wheel there are no arrows
    s.aim(fieldPoint(0, 4));
    s.mouse->click(MouseButton::right);
    s.mouse->click(MouseButton::middle);
    // The cursor moves on, so all of these have been handled.
    s.aim(fieldPoint(1, 4));
    EXPECT_TRUE(s.wheelIsOpen());
    EXPECT_EQ(s.recording.presses().size(), 0U);

    s.mouse->click(MouseButton::left);
    s.waitUntilWheelIsClosed();
    s.recording.waitForPress("key-up b");
    EXPECT_EQ(s.recording.pressTexts(), (Texts{"key-down b", "key-up b"}));
}

TEST_F(Choosing, TheToggleKeyClosesWithoutRunning) {
    Stage& s = fourFields();
    s.openWheel();
    s.aim(fieldPoint(2, 4));
    s.toggle();
    s.waitUntilWheelIsClosed();
    EXPECT_EQ(s.screen.eyes().pointer(), (ScreenPoint{500, 300}));
    s.mouse->move(10, 0);
    waitFor("the real cursor to move", [&] { return s.screen.eyes().pointer() == ScreenPoint{510, 300}; });
    s.mouse->click(MouseButton::left);
    s.recording.waitForPress("button-up left");
    // Had the field run, its key would have come by the time the next field's has.
    s.openWheel();
    s.choose(fieldPoint(3, 4));
    s.recording.waitForPress("key-up d");
    EXPECT_EQ(s.recording.pressTexts(),
              (Texts{"button-down left", "button-up left", "key-down d", "key-up d"}));
}

TEST_F(Choosing, AFieldWithoutStepsClosesAndRunsNothing) {
    Stage& s = stage();
    s.writeFile("default.json",
                oneWheelText("Pusty", {"{ \"name\": \"nic\" }", clickActions({"b"}).front()}));
    s.startAll();
    s.recording.mark();
    s.openWheel();
    s.choose(fieldPoint(0, 2));
    s.waitUntilWheelIsClosed();
    s.openWheel();
    s.choose(fieldPoint(1, 2));
    s.recording.waitForPress("key-up b");
    EXPECT_EQ(s.recording.pressTexts(), (Texts{"key-down b", "key-up b"}));
}

TEST_F(Choosing, ABareLetterOpensTheWheelAndIsTakenFromTheProgram) {
    Stage& s = stage();
    s.writeFile("config.json", "{ \"toggleKey\": \"x\", \"gazeEnabled\": false, \"voiceEnabled\": false }");
    s.startAll();
    s.recording.mark();
    s.openWheel("x");
    tapKey(s.screen.eyes(), "x");
    s.waitUntilWheelIsClosed();
    tapKey(s.screen.eyes(), "y");
    s.recording.waitForPress("key-up y");
    const Texts got = s.recording.pressTexts();
    EXPECT_EQ(std::count(got.begin(), got.end(), "key-down x"), 0);
}

TEST_F(Choosing, TogglesInQuickSuccessionAllCount) {
    Stage& s = fourFields();
    for (int i = 0; i < 12; ++i) {
        s.toggle();
        waitFor("the wheel to open", [&] { return s.wheelIsOpen(); });
        s.toggle();
        waitFor("the wheel to close", [&] { return !s.wheelIsOpen(); });
    }
    s.waitUntilWheelIsClosed();
    s.mouse->move(7, 7);
    waitFor("the real cursor to move", [&] { return s.screen.eyes().pointer() == ScreenPoint{507, 307}; });
    s.openWheel();
    s.choose(fieldPoint(1, 4));
    s.waitUntilWheelIsClosed();
    s.recording.waitForPress("key-up b");
    EXPECT_EQ(s.recording.pressTexts(), (Texts{"key-down b", "key-up b"}));
}

TEST_F(Choosing, APressCountsWhereTheCursorStoodHoweverFastTheMouseMovesOn) {
    stage().writeFile("config.json", settingsText("\"sendDelay\": 0, \"keyHold\": 10"));
    Stage& s = fourFields();
    for (int i = 0; i < 40; ++i) {
        s.recording.mark();
        s.openWheel();
        s.aim(fieldPoint(0, 4));
        s.mouse->press(MouseButton::left);
        s.mouse->move(0, 200);
        s.mouse->release(MouseButton::left);
        s.waitUntilWheelIsClosed();
        s.recording.waitForPresses(2);
        ASSERT_EQ(s.recording.pressTexts(), (Texts{"key-down a", "key-up a"}));
    }
}

TEST_F(Choosing, TheVirtualCursorStaysOnTheLayer) {
    Stage& s = fourFields();
    s.openWheel();
    s.mouse->move(-4000, -3000);
    waitFor("the virtual cursor in the corner", [&] { return s.wheel.cursorIsAt({0, 0}); });
    // Many small movements between two pictures add up.
    for (int i = 0; i < 100; ++i)
        s.mouse->move(1, 1);
    waitFor("the virtual cursor where the sum of the movements leads", [&] {
        const LayerPoint seen = s.wheel.findCursor().value_or(LayerPoint{});
        const int most = s.target->inputIsExact() ? 103 : 203;
        return seen.x >= 97 && seen.x <= most && seen.y >= 97 && seen.y <= most;
    });
    s.trackCursor();
    s.aim(fieldPoint(3, 4));
    s.mouse->click(MouseButton::left);
    s.recording.waitForPress("key-up d");
    EXPECT_EQ(s.screen.eyes().pointer(), (ScreenPoint{500, 300}));
}

TEST_F(Choosing, WithTakeFocusTheProgramInFrontGetsTheFocusBack) {
    Stage& s = stage();
    s.writeFile("config.json", settingsText("\"takeFocus\": true"));
    s.startAll();
    s.recording.mark();
    s.openWheel();
    s.recording.waitForKind("focus-out");
    s.recording.mark();
    s.toggle();
    s.recording.waitForKind("focus-in");
    s.waitUntilWheelIsClosed();
    tapKey(s.screen.eyes(), "q");
    s.recording.waitForPress("key-up q");
    EXPECT_EQ(s.recording.pressTexts(), (Texts{"key-down q", "key-up q"}));
}

TEST_F(Choosing, TheButtonOfTheMainWindowOpensTheWheel) {
    Stage& s = stage();
    s.writeFile("default.json", oneWheelText("Litery", clickActions({"a", "b"})));
    s.startProgram();
    const PixelColor primary{0x18, 0x5F, 0xA5};
    std::optional<ScreenPoint> button;
    // The window manager may still move the window: a button that is lit by the pointer is where it was
    // found.
    const PixelColor hovered{0x13, 0x4E, 0x88};
    waitFor("the button under the pointer", [&] {
        button = s.screen.eyes().findPlain(*s.mainWindow(), primary);
        if (button)
            placePointer(s.screen.eyes(), *button);
        return button && holdsWithin(std::chrono::milliseconds(500),
                                     [&] { return s.screen.eyes().pixel(button->x, button->y) == hovered; });
    });
    s.openWheelAfter([&] { s.mouse->click(MouseButton::left); });
    keepPicture("wheel-over-main-window");
    s.choose(fieldPoint(0, 2));
    s.waitUntilWheelIsClosed();
    EXPECT_EQ(s.screen.eyes().pointer(), *button);
}

} // namespace

} // namespace e2e
