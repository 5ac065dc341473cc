// Scenarios that Windows alone has.

#include "device_double.h"
#include "harness/process.h"
#include "scenario.h"

#include <chrono>
#include <csignal>

namespace e2e {

namespace {

using Texts = std::vector<std::string>;

class OnWindows : public Scenario {};

TEST_F(OnWindows, AnotherProgramActivatesAWheelFile) {
    Stage& s = stage();
    s.writeFile("default.json", oneWheelText("", clickActions({"a", "b"})));
    s.writeFile("inne.json", oneWheelText("", clickActions({"c", "d", "e", "f"})));
    s.writeFile("puste.json", "{ \"wheels\": [ { \"name\": \"bez pól\", \"actions\": [] } ] }");
    s.startAll();
    s.recording.mark();
    const auto activate = [&](const std::string& file) {
        return s.target->sendToEngine({"activate", s.target->pathText(s.folder() / file)});
    };
    EXPECT_EQ(activate("puste.json"), 0);
    EXPECT_EQ(activate("nie-ma.json"), 0);
    s.openWheel();
    s.choose(fieldPoint(1, 2));
    s.recording.waitForPress("key-up b");

    // An open wheel is repainted and goes on.
    s.openWheel();
    EXPECT_EQ(activate("inne.json"), 1);
    s.choose(fieldPoint(1, 4));
    s.recording.waitForPress("key-up d");
    EXPECT_EQ(s.recording.pressTexts(), (Texts{"key-down b", "key-up b", "key-down d", "key-up d"}));
}

TEST_F(OnWindows, NumbersClickTheElementsOfTheProgramInFront) {
    Stage& s = stage({.sound = Sound::microphone});
    const DeviceDouble speech(s, "libvosk", "speech");
    s.writeFile(
        "config.json",
        deviceSettings(true, false, speech.setting("voiceDllPath") + ", \"segmentColor\": \"#0050D0\""));
    s.startProgram();
    s.startRecorder(40);
    s.recording.mark();
    const auto isColor = [&](int x, int y, const PixelColor& color) {
        return differenceOf(s.screen.eyes().pixel(x, y), color) < 60;
    };
    const auto gridStands = [&] { return isColor(640, 100, {0xE0, 0xE0, 0xE0}); };
    const auto labelStands = [&] { return isColor(603, 516, {0x00, 0x50, 0xD0}); };

    // Without the service, as Wine is, nothing comes of it, and the next words are heard.
    speech.write("say pokaż elementy\nsay pokaż siatkę");
    waitFor("the grid", gridStands);
    speech.add("say schowaj siatkę");
    waitFor("no grid", [&] { return !gridStands(); });

    // A program that takes its time to answer keeps nobody waiting.
    const DeviceDouble automation(s, "automation_double", "automation", "automation");
    const std::string elements = "root Recorder\n"
                                 "element 1 one 50000 200 150 300 180 enabled focusable\n"
                                 "element 1 off 50000 200 200 300 230 focusable\n"
                                 "element 1 two 50005 600 500 701 521 enabled\n";
    automation.write(elements + "hang FindAllBuildCache Recorder");
    const std::string server = "HKCR\\CLSID\\{ff48dba4-60ef-4201-aa87-54103eef594e}\\InprocServer32";
    const std::string serverFile =
        s.target->pathText(s.screen.folder() / "automation-automation" / "automation_double.dll");
    for (const Texts& value : {Texts{"/ve", "/d", serverFile}, Texts{"/v", "ThreadingModel", "/d", "Both"}}) {
        Texts words{"add", server, "/f"};
        words.insert(words.end(), value.begin(), value.end());
        ASSERT_EQ(runToEnd(s.target->commandFor("reg", words)), 0);
    }
    speech.add("say pokaż elementy");
    automation.waitForCall("FindAllBuildCache");
    s.openWheel();
    s.toggle();
    s.waitUntilWheelIsClosed();
    EXPECT_FALSE(labelStands());

    automation.write(elements);
    waitFor("the second label", labelStands);
    keepPicture("labels");
    speech.add("say trzy\nsay dwa");
    s.recording.waitForPress("button-up left");
    for (const RecordedEvent& press : s.recording.presses())
        EXPECT_EQ((ScreenPoint{press.x, press.y}), (ScreenPoint{650, 510})) << press.what();
    waitFor("no labels", [&] { return !labelStands(); });
    EXPECT_EQ(automation.log().back(), "left behind 0");
}

/// Under Wine a stopped program keeps the X pointer, whatever becomes of the clip, until it ends.
TEST_F(OnWindows, AProgramThatStallsClosesItsWheelWhenItGoesOnAndIsEndedIfItDoesNot) {
    Stage& s = stage();
    s.writeFile("default.json", oneWheelText("", clickActions({"a"})));
    s.startAll();
    placePointer(s.screen.eyes(), {300, 300});
    s.openWheel();
    s.aim(fieldPoint(0, 1));
    s.recording.mark();
    s.program.send(SIGSTOP);
    const auto stoppedAt = std::chrono::steady_clock::now();
    s.mouse->click(MouseButton::left);
    waitFor("the guard to have acted",
            [&] { return std::chrono::steady_clock::now() - stoppedAt > std::chrono::milliseconds(3000); });
    s.program.send(SIGCONT);
    s.waitUntilWheelIsClosed();
    EXPECT_EQ(s.screen.eyes().pointer(), (ScreenPoint{300, 300}));

    s.openWheel();
    s.program.send(SIGSTOP);
    waitFor("the cursor to be free", [&] {
        s.mouse->move(3, 2);
        return !(s.screen.eyes().pointer() == ScreenPoint{300, 300});
    });
    EXPECT_TRUE(s.program.statusWithin(generousLimit));
    tapKey(s.screen.eyes(), toggleKey);
    s.recording.waitForPress(std::string("key-up ") + toggleKey);
    for (const std::string& press : s.recording.pressTexts())
        EXPECT_NE(press, "key-down a") << "chosen by a press during the stall";
}

TEST_F(OnWindows, WhatOtherProgramsSendToItsWindowsDoesNoHarm) {
    Stage& s = stage();
    s.writeFile("default.json", oneWheelText("", clickActions({"a"})));
    s.startAll();
    placePointer(s.screen.eyes(), {300, 300});
    EXPECT_EQ(s.target->sendToEngine({"close"}), 0);
    EXPECT_EQ(s.target->sendToEngine({"stray"}), 0);
    s.openWheel();
    EXPECT_EQ(s.target->sendToEngine({"close"}), 0);
    s.waitUntilWheelIsClosed();
    EXPECT_EQ(s.screen.eyes().pointer(), (ScreenPoint{300, 300}));
    s.recording.mark();
    s.openWheel();
    s.choose(fieldPoint(0, 1));
    s.recording.waitForPress("key-up a");
}

} // namespace

} // namespace e2e
