// Somebody speaks, the real recogniser listens.

#include "device_double.h"
#include "scenario.h"

#include <algorithm>

namespace e2e {

namespace {

using Texts = std::vector<std::string>;

class Spoken : public Scenario {
protected:
    /// Two wheels of two fields, each with a phrase, and a function without a field.
    void start(const std::string& more) {
        Stage& s = stage({.sound = Sound::microphone});
        const auto wheel = [](const std::string& fields) { return "{ \"actions\": [" + fields + "] }"; };
        const auto field = [](const std::string& phrase, const std::string& key) {
            return "{ \"name\": \"Pole\", \"voice\": \"" + phrase + "\", \"key\": \"" + key + "\" }";
        };
        s.writeFile("default.json", "{ \"wheels\": [" +
                                        wheel(field("leczenie", "a") + "," + field("tarcza", "b")) + "," +
                                        wheel(field("mapa", "c") + "," + field("", "d")) + "] }");
        s.writeFile("voice.json", "{ \"actions\": [" + field("zapisz", "e") + "] }");
        const std::filesystem::path speech = testArguments().speech;
        recogniser = std::make_unique<DeviceDouble>(s, "libvosk_adapter", "adapter", "adapter");
        recogniser->write("library " + s.target->pathText(speech / "runtime" / s.target->runtimeFolder() /
                                                          s.target->libraryFile("libvosk")));
        s.writeFile("config.json", deviceSettings(true, false,
                                                  recogniser->setting("voiceDllPath") + ", \"voiceModel\": " +
                                                      jsonText(s.target->pathText(speech / "model")) + more));
        s.startProgram();
        s.startRecorder(40); // leaves room for a grid of the screen's size
        recogniser->waitForCall("listening");
        placePointer(s.screen.eyes(), {900, 300});
        s.recording.mark();
    }

    /// Until the recogniser has made of it what it can.
    void speak(const std::string& text) {
        stage().screen.sound().say(text);
        // It answers to a long silence too, so only what comes after the last sound counts.
        recogniser->waitForCall("heard", recogniser->count("heard") + 1);
    }

    /// The key of what was said arrives, and nothing but it.
    void expectKey(const std::string& key) {
        stage().recording.waitForPress("key-up " + key);
        EXPECT_EQ(stage().recording.pressTexts(), (Texts{"key-down " + key, "key-up " + key}));
        stage().recording.mark();
    }

    void showByVoice() {
        stage().openWheelAfter([&] { speak("pokaż koło"); });
    }

    std::unique_ptr<DeviceDouble> recogniser;
};

TEST_F(Spoken, TheWheelIsShownTurnedChosenFromAndHidden) {
    start("");
    Stage& s = stage();
    showByVoice();
    keepPicture("spoken-wheel");
    speak("schowaj koło");
    s.waitUntilWheelIsClosed();
    showByVoice();
    speak("następne koło");
    s.aim(fieldPoint(1, 2));
    speak("kliknij");
    s.waitUntilWheelIsClosed();
    expectKey("d");
    showByVoice();
    speak("poprzednie koło");
    s.aim(fieldPoint(0, 2));
    speak("kliknij");
    s.waitUntilWheelIsClosed();
    expectKey("a");
}

TEST_F(Spoken, PhrasesOfFieldsRunTheirFunctionsWithoutAndWithTheWheel) {
    start("");
    speak("tarcza");
    expectKey("b");
    speak("mapa"); // of the wheel that is not the active one
    expectKey("c");
    showByVoice();
    speak("leczenie");
    stage().waitUntilWheelIsClosed();
    expectKey("a");
}

TEST_F(Spoken, PhrasesOfFieldsMayBeKeptToTheOpenWheel) {
    start(", \"voiceGlobal\": false");
    speak("tarcza");
    speak("zapisz"); // has no field, so it is not kept there
    expectKey("e");
    showByVoice();
    speak("tarcza");
    stage().waitUntilWheelIsClosed();
    expectKey("b");
}

TEST_F(Spoken, ClicksGoToTheRealCursorWhileNoWheelIsOpen) {
    start("");
    const auto expectClicks = [&](const std::string& button, int times) {
        stage().recording.waitForPress("button-up " + button, times);
        Texts wanted;
        for (int i = 0; i < times; ++i) {
            wanted.push_back("button-down " + button);
            wanted.push_back("button-up " + button);
        }
        EXPECT_EQ(stage().recording.pressTexts(), wanted);
        stage().recording.mark();
    };
    speak("kliknij");
    expectClicks("left", 1);
    speak("dwuklik");
    expectClicks("left", 2);
    speak("prawy klik");
    expectClicks("right", 1);
}

TEST_F(Spoken, NumbersLeadTheCursorThroughTheGrid) {
    start("");
    const auto leadTo = [&](const std::string& text, ScreenPoint place) {
        speak(text);
        waitFor("the cursor's move", [&] { return stage().screen.eyes().pointer() == place; });
    };
    leadTo("pokaż siatkę", {640, 400});
    leadTo("jedenaście", {800, 500});
    leadTo("dwa", {880, 450});
    leadTo("cztery", {920, 475});
    leadTo("jeden", {900, 462});
    speak("kliknij dwa razy na trzy"); // meant for numbered elements, of which there are none
    speak("kliknij");
    stage().recording.waitForPress("button-up left");
    EXPECT_EQ(stage().recording.pressTexts(), (Texts{"button-down left", "button-up left"}));
    const RecordedEvent click = stage().recording.presses().front();
    EXPECT_EQ((ScreenPoint{click.x, click.y}), (ScreenPoint{900, 462}));
}

/// Programs publish their elements on this system alone.
class OnLinuxSpoken : public Spoken {};

TEST_F(OnLinuxSpoken, ANumberOfTwoWordsOpensAnEntryOfAnotherProgram) {
    start("");
    Stage& s = stage();
    Process other({{"gtk3-demo"}, s.screen.environment(), {}, s.screen.folder() / "other.log"});
    const auto waitForTitle = [&](const std::string& title) {
        waitFor("the window " + title, [&] { return s.screen.eyes().titleOfActiveWindow() == title; });
    };
    waitForTitle("Application Class");
    const std::size_t windowCount = s.screen.eyes().shownWindows().size();
    waitFor("labels", [&] { // a program that has just come up may not have published anything yet
        speak("pokaż elementy");
        return holdsWithin(std::chrono::milliseconds(3000),
                           [&] { return s.screen.eyes().shownWindows().size() > windowCount; });
    });
    speak("kliknij dwa razy na dwadzieścia jeden");
    waitForTitle("Foreign drawing");
}

TEST_F(Spoken, WhatIsNoPhraseDoesNothing) {
    start("");
    for (const char* text : {"dzień dobry", "która godzina", "zielone drzewo", "pięć", "dwadzieścia jeden",
                             "kliknij dwa razy na trzy"})
        speak(text);
    EXPECT_FALSE(stage().wheelIsOpen());
    speak("leczenie");
    expectKey("a"); // and nothing before it
}

} // namespace

} // namespace e2e
