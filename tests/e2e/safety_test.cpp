// What must not happen to somebody who has no other way to use the computer: a mouse that stays away, a key
// that stays down.

#include "scenario.h"

#include <csignal>

namespace e2e {

namespace {

using Texts = std::vector<std::string>;

/// Within this time after the program's death everything works again.
constexpr std::chrono::milliseconds recoveryLimit{1000};

class Safety : public Scenario {
protected:
    Stage& fieldWith(const std::string& steps, const std::string& settings = "") {
        Stage& s = stage();
        s.writeFile("config.json", settingsText(settings));
        s.writeFile("default.json",
                    oneWheelText("Próba", {"{ \"name\": \"pole\", \"steps\": [ " + steps + " ] }"}));
        s.startAll();
        s.restPointerAt({300, 300});
        return s;
    }

    void runField() {
        stage().openWheel();
        stage().choose(fieldPoint(0, 1, 120));
        stage().waitUntilWheelIsClosed();
    }

    void kill() {
        stage().program.send(SIGKILL);
        goneSince = std::chrono::steady_clock::now();
    }

    /// The real mouse moves the cursor and clicks in the program in front.
    void expectMouseIsBack() {
        Stage& s = stage();
        const ScreenPoint before = s.screen.eyes().pointer();
        const bool moves = holdsWithin(recoveryLimit, [&] {
            s.mouse->move(3, 2);
            return !(s.screen.eyes().pointer() == before);
        });
        EXPECT_TRUE(moves) << "the cursor still stands at " << before.x << ", " << before.y;
        s.mouse->click(MouseButton::left);
        s.recording.waitForPress("button-up left");
        EXPECT_LE(sinceGone(), recoveryLimit * 2);
    }

    std::chrono::milliseconds sinceGone() const {
        return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                     goneSince);
    }

    std::chrono::steady_clock::time_point goneSince = std::chrono::steady_clock::now();
};

TEST_F(Safety, ADeathWithTheWheelOpenGivesTheMouseBack) {
    Stage& s = fieldWith(R"({ "key": "a" })");
    s.openWheel();
    s.aim(fieldPoint(0, 1, 120));
    kill();
    expectMouseIsBack();
    waitFor("the wheel to vanish", [&] { return !s.wheelIsOpen(); });
    EXPECT_EQ(s.recording.pressTexts(), (Texts{"button-down left", "button-up left"}));
    tapKey(s.screen.eyes(), toggleKey);
    s.recording.waitForPress(std::string("key-up ") + toggleKey);
}

TEST_F(Safety, ADeathInAClickLetsGoOfTheKey) {
    Stage& s = fieldWith(R"({ "key": "shift", "action": "hold", "value": 900 }, { "key": "w" })",
                         R"("keyHold": 1000)");
    runField();
    s.recording.waitForPress("key-down w");
    kill();
    s.recording.waitForPress("key-up w");
    EXPECT_LE(sinceGone(), recoveryLimit);
    EXPECT_EQ(s.recording.count("key-repeat"), 0);
    // The keyboard is as it was: a key that a person holds repeats.
    setKey(s.screen.eyes(), "w", true);
    s.recording.waitForKind("key-repeat");
    setKey(s.screen.eyes(), "w", false);
}

TEST_F(Safety, ADeathInATimedHoldLetsGoOfTheKey) {
    Stage& s = fieldWith(R"({ "key": "shift", "action": "hold", "value": 60000 })");
    runField();
    s.recording.waitForPress("key-down Shift_L");
    kill();
    s.recording.waitForPress("key-up Shift_L");
    EXPECT_LE(sinceGone(), recoveryLimit);
}

TEST_F(Safety, AnOrderlyEndInATimedHoldLetsGoOfTheKeyToo) {
    Stage& s = fieldWith(R"({ "key": "shift", "action": "hold", "value": 60000 })");
    runField();
    s.recording.waitForPress("key-down Shift_L");
    s.endProgram();
    s.recording.waitForPress("key-up Shift_L");
    tapKey(s.screen.eyes(), "q");
    s.recording.waitForPress("key-up q");
    EXPECT_EQ(s.recording.pressTexts(),
              (Texts{"key-down Shift_L", "key-up Shift_L", "key-down q", "key-up q"}));
}

TEST_F(Safety, AKeyHeldOnPurposeStaysDownAfterADeathUntilThePersonTapsIt) {
    Stage& s = fieldWith(R"({ "key": "w", "action": "hold" })");
    runField();
    s.recording.waitForPress("key-down w");
    kill();
    s.program.statusWithin(generousLimit);
    waitFor("the key to repeat again as it did",
            [&] { return s.screen.eyes().autoRepeats(s.screen.eyes().keycodeOf("w")); });
    tapKey(s.screen.eyes(), "w");
    s.recording.waitForPress("key-up w");
    EXPECT_EQ(s.recording.pressTexts(), (Texts{"key-down w", "key-up w"}));
}

TEST_F(Safety, ADeathInAMouseClickLetsGoOfTheButton) {
    Stage& s = fieldWith(R"({ "key": "rmb" })", R"("keyHold": 1000)");
    runField();
    s.recording.waitForPress("button-down right");
    kill();
    s.recording.waitForPress("button-up right");
    EXPECT_LE(sinceGone(), recoveryLimit);
    EXPECT_EQ(s.screen.eyes().pressedButtons(), 0U);
}

TEST_F(Safety, TheProgramStartsAgainAfterADeath) {
    Stage& s = fieldWith(R"({ "key": "a" })");
    s.openWheel();
    kill();
    s.program.statusWithin(generousLimit);
    s.recorder.end();
    s.startAll();
    s.recording.mark();
    runField();
    s.recording.waitForPress("key-up a");
    EXPECT_EQ(s.recording.pressTexts(), (Texts{"key-down a", "key-up a"}));
}

TEST_F(Safety, OrderlyQuitWithTheWheelOpenGivesTheMouseBack) {
    Stage& s = fieldWith(R"({ "key": "a" })");
    s.openWheel();
    s.aim(fieldPoint(0, 1, 120));
    s.target->askToQuit(s.program);
    EXPECT_EQ(s.program.statusWithin(generousLimit), 0);
    goneSince = std::chrono::steady_clock::now();
    s.waitUntilWheelIsClosed();
    EXPECT_EQ(s.screen.eyes().pointer(), (ScreenPoint{300, 300}));
    expectMouseIsBack();
    EXPECT_EQ(s.recording.pressTexts(), (Texts{"button-down left", "button-up left"}));
}

} // namespace

} // namespace e2e
