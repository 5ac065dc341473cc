#include "scenario.h"

#include <algorithm>

namespace e2e {

namespace {

using Texts = std::vector<std::string>;

/// How much longer than told a pause may last: threads wait their turn on a busy machine.
constexpr long lateByMs = 500;
/// Event times are whole milliseconds, each cut off.
constexpr long roundingMs = 2;

class Steps : public Scenario {
protected:
    /// One wheel with a field for each list of steps; `settings` goes into the settings file.
    Stage& fieldsWith(const Texts& stepLists, const std::string& settings = "") {
        Texts actions;
        for (const std::string& steps : stepLists)
            actions.push_back("{ \"name\": \"" + std::to_string(actions.size() + 1) + "\", " + steps + " }");
        Stage& s = stage();
        s.writeFile("config.json", settingsText(settings));
        s.writeFile("default.json", oneWheelText("Kroki", actions));
        fieldCount = static_cast<int>(actions.size());
        s.startAll();
        s.restPointerAt({200, 200});
        return s;
    }

    void run(int field) {
        stage().openWheel();
        stage().choose(fieldPoint(field, fieldCount));
        stage().waitUntilWheelIsClosed();
    }

    /// The pauses between the presses and releases are at least these, and not much more.
    void expectPauses(const std::vector<long>& pausesMs) {
        const std::vector<RecordedEvent> events = stage().recording.presses();
        ASSERT_EQ(events.size(), pausesMs.size() + 1);
        for (std::size_t i = 0; i < pausesMs.size(); ++i) {
            const long pause = events[i + 1].timeMs - events[i].timeMs;
            EXPECT_GE(pause, pausesMs[i] - roundingMs) << "before " << events[i + 1].what();
            EXPECT_LE(pause, pausesMs[i] + lateByMs) << "before " << events[i + 1].what();
        }
    }

    int fieldCount = 0;
};

TEST_F(Steps, ClicksHoldsAndPausesFollowInTheirOrder) {
    Stage& s = fieldsWith({R"("delay": 150, "steps": [ { "key": "a", "value": 3 }, { "key": "b" },
                              { "key": "shift", "action": "hold", "value": 400 },
                              { "key": "F5", "action": "klik" } ])"},
                          R"("keyHold": 80, "sendDelay": 700)");
    s.openWheel();
    s.aim(fieldPoint(0, 1));
    const auto pressed = std::chrono::steady_clock::now();
    s.mouse->click(MouseButton::left);
    s.recording.waitForPresses(1);
    EXPECT_GE(std::chrono::steady_clock::now() - pressed, std::chrono::milliseconds(700));
    s.recording.waitForPresses(12);
    EXPECT_EQ(
        s.recording.pressTexts(),
        (Texts{"key-down a", "key-up a", "key-down a", "key-up a", "key-down a", "key-up a", "key-down b",
               "key-up b", "key-down Shift_L", "key-up Shift_L", "key-down F5", "key-up F5"}));
    expectPauses({80, 80, 80, 80, 80, 150, 80, 150, 400, 150, 80});
}

TEST_F(Steps, AKeyHeldWithoutATimeStaysDownUntilAnotherFieldLetsGo) {
    Stage& s = fieldsWith({R"("steps": [ { "key": "w", "action": "przytrzymaj" },
                              { "key": "ctrl", "action": "hold" }, { "key": "a" } ])",
                           R"("steps": [ { "key": "w", "action": "puść" },
                              { "key": "ctrl", "action": "release" } ])"});
    run(0);
    s.recording.waitForPress("key-up a");
    run(1); // the held modifier leaves the toggle key alone
    s.recording.waitForPress("key-up Control_L");
    EXPECT_EQ(s.recording.pressTexts(), (Texts{"key-down w", "key-down Control_L", "key-down a", "key-up a",
                                               "key-up w", "key-up Control_L"}));
    // On Windows an injected key does not repeat; nor does it elsewhere.
    EXPECT_EQ(s.recording.count("key-repeat"), 0);
    EXPECT_TRUE(s.screen.eyes().autoRepeats(s.screen.eyes().keycodeOf("w")));
}

TEST_F(Steps, MouseButtonsClickWhereTheRealCursorIs) {
    Stage& s =
        fieldsWith({R"("steps": [ { "key": "lmb" }, { "key": "ppm" }, { "key": "mmb" }, { "key": "mb4" },
                              { "key": "mouse5" }, { "key": "lpm", "action": "hold" }, { "key": "LMB",
                              "action": "release" } ])"});
    run(0);
    s.recording.waitForPresses(12);
    EXPECT_EQ(s.recording.pressTexts(),
              (Texts{"button-down left", "button-up left", "button-down right", "button-up right",
                     "button-down middle", "button-up middle", "button-down side1", "button-up side1",
                     "button-down side2", "button-up side2", "button-down left", "button-up left"}));
    for (const RecordedEvent& event : s.recording.presses())
        EXPECT_EQ((ScreenPoint{event.x, event.y}), (ScreenPoint{200, 200})) << event.what();
}

TEST_F(Steps, InjectedInputPassesAnOpenWheel) {
    Stage& s = fieldsWith({R"("delay": 600, "steps": [ { "key": "a" }, { "key": "lmb" }, { "key": "b" } ])"});
    run(0);
    s.recording.waitForPress("key-up a");
    s.openWheel();
    s.recording.waitForPress("key-up b");
    EXPECT_TRUE(s.wheelIsOpen());
    EXPECT_EQ(s.recording.pressTexts(), (Texts{"key-down a", "key-up a", "button-down left", "button-up left",
                                               "key-down b", "key-up b"}));
}

TEST_F(Steps, RunsDoNotWaitForEachOther) {
    Stage& s = fieldsWith({R"("steps": [ { "key": "w", "action": "hold", "value": 4000 } ])",
                           R"("steps": [ { "key": "b" } ])"});
    run(0);
    s.recording.waitForPress("key-down w");
    run(1);
    s.recording.waitForPress("key-up w");
    EXPECT_EQ(s.recording.pressTexts(), (Texts{"key-down w", "key-down b", "key-up b", "key-up w"}));
}

TEST_F(Steps, KeysOfEveryKindArriveAsThemselves) {
    Stage& s = fieldsWith(
        {R"("keys": [ "up", "home", "delete", "pagedown", "space", "enter", "tab", "esc", "5", "F1",
                              "F13", "capslock", "capslock", "backspace", "win", "volumeup", "playpause" ])"},
        R"("keyHold": 20, "sendDelay": 50)");
    run(0);
    const Texts expected = {"Up",
                            "Home",
                            "Delete",
                            "Next",
                            "space",
                            "Return",
                            "Tab",
                            "Escape",
                            "5",
                            "F1",
                            "F13",
                            "Caps_Lock",
                            "Caps_Lock",
                            "BackSpace",
                            "Super_L",
                            "XF86AudioRaiseVolume",
                            "XF86AudioPlay"};
    s.recording.waitForPresses(2 * expected.size());
    Texts downs;
    for (const RecordedEvent& event : s.recording.presses()) {
        if (event.kind == "key-down")
            downs.push_back(event.name);
    }
    EXPECT_EQ(downs, expected);
}

TEST_F(Steps, OpensFilesProgramsAndAddresses) {
    stage().target->setHandler(testArguments().recorder);
    const auto path = [this](const std::filesystem::path& file) {
        return jsonText(stage().target->pathText(file));
    };
    const std::filesystem::path document = stage().folder() / "dokument.txt";
    stage().writeFile("dokument.txt", "treść\n");
    Stage& s = fieldsWith(
        {"\"steps\": [ { \"open\": " + path(document) + " } ]",
         "\"steps\": [ { \"open\": " + path(testArguments().recorder) + " } ]",
         "\"steps\": [ { \"open\": \"handled:przyklad\" } ]",
         "\"steps\": [ { \"open\": " + path(stage().folder() / "nie-ma-tego.txt") +
             " }, { \"open\": \"nie-ma-takiego-programu\" }, { \"open\": \"\" }, { \"key\": \"z\" } ]"});
    const Texts expectedEnds = {"dokument.txt", "started", "handled:przyklad"};
    for (int field = 0; field < 3; ++field) {
        run(field);
        const auto index = static_cast<std::size_t>(field);
        waitFor("field " + std::to_string(field) + " to open", [&] { return s.notes().size() > index; });
        EXPECT_TRUE(s.notes()[index].ends_with(expectedEnds[index])) << s.notes()[index];
    }
    run(3);
    s.recording.waitForPress("key-up z");
    EXPECT_EQ(s.notes().size(), 3U);
}

} // namespace

} // namespace e2e
