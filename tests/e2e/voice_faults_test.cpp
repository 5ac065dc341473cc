// A speech library that is missing, breaks or hangs, and a microphone that comes and goes.

#include "device_double.h"
#include "scenario.h"
#include "shell_user.h"

#include <algorithm>
#include <csignal>

namespace e2e {

namespace {

using Texts = std::vector<std::string>;

/// How long an end may take while a library hangs: what the program grants it, and what comes after that.
constexpr std::chrono::milliseconds quickEnd{2500 + 1500};

class VoiceFaults : public Scenario {
protected:
    Stage& voiceStage(Sound sound = Sound::microphone) {
        Stage& s = stage({.sound = sound});
        s.programVariables["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1";
        s.writeFile("default.json", oneWheelText("", clickActions({"a", "b"})));
        return s;
    }

    /// With the double in the library's place.
    void start(const std::string& script, const std::string& variant = "complete",
               Sound sound = Sound::microphone) {
        Stage& s = voiceStage(sound);
        library = std::make_unique<DeviceDouble>(s, "libvosk", "speech", variant);
        library->write(script);
        s.writeFile("config.json", deviceSettings(true, false, library->setting("voiceDllPath")));
        s.startProgram();
    }

    /// Where the status can be read.
    void expectStatus(const std::string& text) {
        const Target& target = *stage().target;
        if (!testArguments().statusReader.empty()) {
            waitFor("the status " + text, [&] {
                return target.statusText("Komendy głosowe").value_or("").starts_with(text + " ·");
            });
        }
    }

    void expectToHear() {
        stage().openWheelAfter([&] { library->add("say pokaż koło"); });
    }

    std::unique_ptr<DeviceDouble> library;
};

TEST_F(VoiceFaults, EachFailureOfTheStartHasItsStatusAndFreesWhatWasMade) {
    Stage& s = voiceStage();
    const std::string newRecogniser = "recognizer_new_grm 16000 [\"pokaż koło\",";
    const struct {
        const char* script;
        const char* variant;
        const char* status;
        Texts calls; // the first ones; the last of them is waited for
        bool isListening;
    } cases[] = {
        {"", "without_required", "błąd inicjalizacji", {}, false},
        {"model null", "complete", "brak katalogu modelu języka", {"set_log_level -1", "model_new "}, false},
        {"recognizer null",
         "complete",
         "błąd inicjalizacji",
         {"set_log_level -1", "model_new ", newRecogniser, "model_free"},
         false},
        {"recognizer fault",
         "without_optional",
         "błąd inicjalizacji",
         {"model_new ", newRecogniser, "model_free"},
         false},
        {"", "without_optional", "aktywny", {"model_new ", newRecogniser, "accept_waveform 3200"}, true},
        {"unknown koło",
         "complete",
         "aktywny",
         {"set_log_level -1", "model_new ", "recognizer_new_grm 16000 [\"pokaż siatkę\",",
          "accept_waveform 3200"},
         true},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(std::string(each.script) + ", " + each.variant);
        start(each.script, each.variant);
        expectStatus(each.status);
        if (!each.calls.empty())
            library->waitForCall(each.calls.back());
        s.endProgram();
        const Texts calls = library->log();
        ASSERT_GE(calls.size(), each.calls.size());
        for (std::size_t i = 0; i < each.calls.size(); ++i)
            EXPECT_TRUE(calls[i].starts_with(each.calls[i])) << calls[i];
        if (each.isListening) {
            EXPECT_EQ((Texts{calls.end() - 2, calls.end()}), (Texts{"recognizer_free", "model_free"}));
        } else {
            EXPECT_EQ(calls.size(), each.calls.size());
        }
        library->forgetLog();
    }
}

TEST_F(VoiceFaults, WithoutALibraryOrWithOneThatLacksANameTheProgramGoesOn) {
    Stage& s = voiceStage();
    const std::filesystem::path real =
        testArguments().speech / "runtime" / s.target->runtimeFolder() / s.target->libraryFile("libvosk");
    const struct {
        bool isEnabled;
        std::filesystem::path library;
        std::string status;
    } cases[] = {
        {false, real, "wyłączony (voiceEnabled = false)"},
        {true, s.screen.folder() / "nothing", "brak " + s.target->libraryFile("libvosk")},
        {true, real, "błąd inicjalizacji"}, // its version cannot change a grammar
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.status);
        s.writeFile("config.json",
                    deviceSettings(each.isEnabled, false,
                                   "\"voiceDllPath\": " + jsonText(s.target->pathText(each.library))));
        s.startAll();
        expectStatus(each.status);
        s.openWheel();
        s.toggle();
        s.waitUntilWheelIsClosed();
        s.recorder.end();
        s.endProgram();
    }
}

TEST_F(VoiceFaults, FaultsAndOddAnswersCostNoMoreThanTheirBuffers) {
    start("fault\nfault\nanswer null\nanswer {}\nanswer {\"text\" : \"\"}\nanswer \nsay [unk]\nsay pokaż");
    library->waitForCall("result", 6);
    stage().startRecorder();
    expectToHear();
    for (const std::string& call : library->log()) {
        if (call.starts_with("accept_waveform")) {
            EXPECT_EQ(call, "accept_waveform 3200");
        }
    }
}

TEST_F(VoiceFaults, ANewTableReachesTheRecogniserThoughItCannotChangeItsGrammar) {
    start("set_grm fault");
    library->waitForCall("accept_waveform");
    stage().writeFile("voice.json", R"({"actions": [{"name": "Zapis", "voice": "zapisz", "key": "q"}]})");
    ShellUser user(stage());
    user.waitUntilInFront();
    user.goTo(Page::voice);
    user.tab(2);
    user.key("space"); // any switch has the files read again
    library->waitForCall("recognizer_new_grm", 2);
    const Texts calls = library->log();
    const auto change = std::find_if(calls.begin(), calls.end(),
                                     [](const std::string& call) { return call.starts_with("set_grm"); });
    ASSERT_GE(calls.end() - change, 2);
    EXPECT_NE(change->find("\"zapisz\",\"[unk]\"]"), std::string::npos);
    EXPECT_EQ(change[1], "recognizer_new_grm 16000 " + change->substr(std::string("set_grm ").size()));
    stage().startRecorder();
    stage().recording.mark();
    library->add("say zapisz");
    stage().recording.waitForPress("key-up q");
}

TEST_F(VoiceFaults, AMicrophoneMayComeLater) {
    start("", "complete", Sound::silent);
    library->waitForCall("recognizer_new_grm");
    expectStatus("brak mikrofonu");
    stage().screen.sound().plugMicrophoneIn();
    library->waitForCall("accept_waveform");
    expectStatus("aktywny");
    stage().startRecorder();
    expectToHear();
}

TEST_F(VoiceFaults, AMicrophoneThatIsLostLeavesTheWheelAtWork) {
    Stage& s = voiceStage();
    SoundServer& sound = s.screen.sound();
    for (const bool isWholeServerLost : {false, true}) {
        SCOPED_TRACE(isWholeServerLost);
        start("");
        library->waitForCall("accept_waveform");
        s.startRecorder();
        if (isWholeServerLost)
            sound.kill();
        else
            sound.unplugMicrophone();
        s.openWheel();
        s.toggle();
        s.waitUntilWheelIsClosed();
        expectStatus("aktywny");
        s.recorder.end();
        s.endProgram();
        EXPECT_EQ(library->log().back(), "model_free");
        library->forgetLog();
        if (!isWholeServerLost)
            sound.plugMicrophoneIn();
    }
}

TEST_F(VoiceFaults, ALibraryThatHangsHoldsTheProgramUpNoLongerThanGranted) {
    Stage& s = voiceStage();
    for (const char* script : {"model hang", "accept hang"}) {
        SCOPED_TRACE(script);
        start(script);
        library->waitForCall(std::string(script) == "model hang" ? "model_new" : "accept_waveform");
        expectStatus(std::string(script) == "model hang" ? "ładowanie modelu…" : "aktywny");
        const auto asked = std::chrono::steady_clock::now();
        s.endProgram();
        EXPECT_LT(std::chrono::steady_clock::now() - asked, quickEnd);
        library->forgetLog();
    }
}

} // namespace

} // namespace e2e
