#include "core/lifecycle.h"
#include "core/text.h"
#include "engine_test.h"
#include "platform/clock.h"
#include "voice/phrase_table.h"
#include "voice/speech_library.h"
#include "voice/voice_dispatch.h"
#include "voice/voice_thread.h"

#include <deque>
#include <set>
#include <tuple>

namespace {

using Texts = std::vector<std::string>;

WheelAction spoken(const std::u16string& phrase, std::uint16_t virtualKey) {
    WheelAction action = virtualKey == 0 ? WheelAction{} : field(u"pole", virtualKey);
    action.voice = phrase;
    return action;
}

/// What the recogniser of the test does, and what was asked of it.
struct Recogniser {
    std::uint32_t modelLoadMs = 0;
    int refusedRecognisers = 0; // this many come back null
    int setFaults = 0;
    std::uint32_t stallMs = 0;       // at every seventh buffer
    std::string heard;               // the first byte of each buffer
    std::deque<const char*> answers; // one for each buffer; then none is ready
    std::set<std::string> unknownWords;
    Texts calls;
    std::string grammar;
    bool isReady = false;
};

Recogniser recogniser;

void* newModel(const char* path) {
    recogniser.calls.push_back("model " + std::string(path));
    sleepMs(recogniser.modelLoadMs);
    return &recogniser;
}

void* newRecognizer(void*, float rate, const char* grammar) {
    recogniser.calls.push_back("new at " + std::to_string(static_cast<int>(rate)));
    recogniser.grammar = grammar;
    return recogniser.refusedRecognisers-- > 0 ? nullptr : &recogniser;
}

void setGrammar(void*, const char* grammar) {
    recogniser.calls.push_back("set");
    if (recogniser.setFaults-- > 0)
        throw SimulatedFault();
    recogniser.grammar = grammar;
}

std::int32_t acceptSound(void*, const char* sound, std::int32_t byteCount) {
    EXPECT_EQ(byteCount, 3200);
    recogniser.heard += *sound;
    if (recogniser.heard.size() % 7 == 0)
        sleepMs(recogniser.stallMs);
    return recogniser.answers.empty() ? 0 : 1;
}

const char* takeResult(void*) {
    const char* answer = recogniser.answers.front();
    recogniser.answers.pop_front();
    if (answer == nullptr)
        throw SimulatedFault();
    return answer;
}

std::int32_t findWord(void*, const char* word) {
    return recogniser.unknownWords.contains(word) ? -1 : 7;
}

SimulatedLibrary speechLibrary() {
    return {{{"vosk_set_log_level", exported(+[](std::int32_t level) { EXPECT_EQ(level, -1); })},
             {"vosk_model_new", exported(newModel)},
             {"vosk_model_free", exported(+[](void*) { recogniser.calls.push_back("free model"); })},
             {"vosk_recognizer_new_grm", exported(newRecognizer)},
             {"vosk_recognizer_set_grm", exported(setGrammar)},
             {"vosk_recognizer_accept_waveform", exported(acceptSound)},
             {"vosk_recognizer_result", exported(takeResult)},
             {"vosk_recognizer_free", exported(+[](void*) { recogniser.calls.push_back("free"); })},
             {"vosk_model_find_word", exported(findWord)}}};
}

class Voice : public EngineTest {
protected:
    Voice() {
        recogniser = {};
        desktop.libraries[u"simulated-speech"] = speechLibrary();
    }

    /// Starts the engine with voice on, and puts these wheels in force.
    void listenWith(std::vector<Wheel> wheels, const std::string& settings = "") {
        folder.write("config.json", R"({"gazeEnabled": false)" + settings + "}");
        ASSERT_TRUE(OverlayEngineStart());
        engineState.wheels = std::move(wheels);
        engineState.voiceActions.clear();
        rebuildPhraseTable();
        desktop.advanceBy(300);
    }

    void setVoice(bool enabled) {
        folder.write("config.json", enabled ? R"({"gazeEnabled": false, "voiceEnabled": true})"
                                            : R"({"gazeEnabled": false, "voiceEnabled": false})");
        OverlayReloadConfig();
        desktop.settle();
    }

    void hear(const char* answer) {
        recogniser.answers.push_back(answer);
        desktop.advanceBy(400);
    }

    static std::string status() { return textOf(OverlayVoiceStatus()); }

    static std::string row(std::size_t index) {
        const PhraseEntry& entry = engineState.phraseTable.at(index);
        return entry.phrase + " " + std::to_string(entry.command) + " " + std::to_string(entry.wheelIndex) +
               " " + std::to_string(entry.actionIndex);
    }
};

TEST_F(Voice, TheTableHoldsTheFixedRowsThenNumbersFieldsAndVoiceFunctions) {
    engineState.wheels = {{u"a", {spoken(u"", 65), spoken(u"KLIKNIJ Łódź", 65)}},
                          {u"b", {spoken(u"dwa  \"razy\\", 66)}}};
    engineState.voiceActions = {spoken(u"Notatnik", 67)};
    rebuildPhraseTable();
    EXPECT_EQ(OverlayVoicePhraseCount(), 314);
    const char* const fixed[] = {
        "pokaż koło 1",       "schowaj koło 2",    "następne koło 3",     "poprzednie koło 4",
        "pokaż siatkę 5",     "schowaj siatkę 6",  "pokaż elementy 10",   "pokaż elementy strony 12",
        "elementy strony 12", "ukryj elementy 11", "schowaj elementy 11", "kliknij 7",
        "dwuklik 8",          "prawy klik 9"};
    for (std::size_t i = 0; i < std::size(fixed); ++i)
        EXPECT_EQ(row(i), std::string(fixed[i]) + " -1 -1");
    const std::pair<std::size_t, std::string> numbers[] = {{1, "jeden"},
                                                           {11, "jedenaście"},
                                                           {19, "dziewiętnaście"},
                                                           {20, "dwadzieścia"},
                                                           {21, "dwadzieścia jeden"},
                                                           {40, "czterdzieści"},
                                                           {99, "dziewięćdziesiąt dziewięć"}};
    for (const auto& [number, word] : numbers) {
        const std::size_t first = 14 + 3 * (number - 1);
        EXPECT_EQ(row(first), word + " " + std::to_string(100 + number) + " -1 -1");
        EXPECT_EQ(row(first + 1),
                  "kliknij dwa razy na " + word + " " + std::to_string(300 + number) + " -1 -1");
        EXPECT_EQ(row(first + 2), "kliknij prawy na " + word + " " + std::to_string(500 + number) + " -1 -1");
    }
    EXPECT_EQ(row(311), "kliknij Łódź 0 0 1") << "only ASCII letters are folded";
    EXPECT_EQ(row(312), "dwa  \"razy\\ 0 1 0");
    EXPECT_EQ(row(313), "notatnik 0 -2 0");

    const std::string grammar = buildGrammar(nullptr, findWord, nullptr);
    EXPECT_TRUE(grammar.starts_with("[\"pokaż koło\",\"schowaj koło\",")) << grammar;
    EXPECT_TRUE(grammar.ends_with(",\"kliknij Łódź\",\"dwa  \\\"razy\\\\\",\"notatnik\",\"[unk]\"]"))
        << grammar;
}

TEST_F(Voice, PhrasesWithUnknownWordsLeaveTheGrammarAndAreNamedButKeepTheirRows) {
    engineState.wheels = {{u"a", {spoken(u"xyz  lampa", 65), spoken(u"lampa abc", 66), spoken(u" ", 67)}}};
    rebuildPhraseTable();
    recogniser.unknownWords = {"xyz", "abc", "kliknij", "dwuklik"};
    std::u16string skipped;
    const std::string grammar = buildGrammar(&recogniser, findWord, &skipped);
    EXPECT_EQ(grammar.find("xyz"), grammar.npos);
    EXPECT_EQ(grammar.find("kliknij"), grammar.npos);
    EXPECT_TRUE(grammar.ends_with(",\"dziewięćdziesiąt dziewięć\",\" \",\"[unk]\"]"));
    EXPECT_TRUE(utf8FromUtf16(skipped).starts_with("„kliknij”, „dwuklik”, „kliknij dwa razy na jeden”, "));
    EXPECT_TRUE(utf8FromUtf16(skipped).ends_with(", „xyz  lampa”, „lampa abc”"));
    EXPECT_EQ(OverlayVoicePhraseCount(), 314);
    EXPECT_EQ(buildGrammar(
                  &recogniser, [](void*, const char*) { return -1; }, nullptr),
              "[\" \",\"[unk]\"]");
    const FindWordFunction faulting = [](void*, const char*) -> std::int32_t { throw SimulatedFault(); };
    EXPECT_EQ(buildGrammar(&recogniser, faulting, nullptr), buildGrammar(nullptr, nullptr, nullptr));
}

TEST_F(Voice, OnlyTheWholeTextActsAndVoiceGlobalGovernsFieldsAlone) {
    startWith({{u"a", {spoken(u"lampa", 65), spoken(u"kliknij", 66)}}, {u"b", {spoken(u"Lampa", 67)}}});
    engineState.voiceActions = {spoken(u"radio", 68), spoken(u"lampa", 69)};
    rebuildPhraseTable();
    // text, is the wheel open, is voiceGlobal set, what is pressed, does the wheel close
    const std::tuple<const char*, bool, bool, const char*, bool> cases[] = {
        {"lampa", false, true, "key 65 down", false},
        {"lampa", false, false, "", false},
        {"lampa", true, false, "key 65 down", true},
        {"radio", false, false, "key 68 down", false},
        {"radio", true, true, "key 68 down", true},
        {"kliknij", false, false, "button 0 down", false},
        {"", false, true, "", false},
        {"[unk]", true, true, "", false},
        {"lampa [unk]", true, true, "", false},
        {"Lampa", true, true, "", false},
        {" lampa", false, true, "", false},
        {"dziewięć", true, true, "", false},
        {"dwuklik", true, true, "button 0 down, button 0 down", false},
    };
    for (const auto& [text, isOpen, isGlobal, input, closes] : cases) {
        engineConfig.voiceGlobal = isGlobal;
        if (OverlayIsWheelVisible() != isOpen)
            OverlayToggleWheel();
        desktop.clearJournal();
        dispatchRecognisedText(text);
        desktop.advanceBy(1000);
        std::string pressed;
        for (const std::string& entry : desktop.journalOf({JournalKind::input}))
            if (entry.ends_with("down"))
                pressed += (pressed.empty() ? "" : ", ") + entry;
        EXPECT_EQ(pressed, input) << text << isOpen << isGlobal;
        EXPECT_EQ(OverlayIsWheelVisible(), isOpen && !closes) << text;
    }
}

TEST_F(Voice, TheTextIsTakenFromTheAnswersOneShape) {
    const std::pair<const char*, const char*> cases[] = {
        {"{\n  \"text\" : \"pokaż koło\"\n}", "pokaż koło"},
        {"{\"partial\" : \"x\", \"text\":\"a\"}", "a"},
        {"{\"text\" : \"\"}", ""},
        {"{\"text\" : \"cut", ""},
        {"{\"text\" : 5}", ""},
        {"\"text\"", ""},
        {"", ""},
        {nullptr, ""},
    };
    for (const auto& [answer, text] : cases)
        EXPECT_EQ(recognisedText(answer), text);
}

TEST_F(Voice, ListensThroughTheModelItWasGivenAndActsOnWhatItHears) {
    listenWith({{u"a", {spoken(u"lampa", 65)}}},
               R"(, "voiceModel": "pl-model", "voiceDllPath": "/brak/lib.so")");
    EXPECT_EQ(status(), "aktywny");
    EXPECT_EQ(
        desktop.libraryAttempts,
        (std::vector<std::u16string>{u"/brak/lib.so", folder.path("simulated-speech"), u"simulated-speech"}));
    EXPECT_EQ(recogniser.calls, (Texts{"model " + utf8FromUtf16(folder.path("pl-model")), "new at 16000"}));
    EXPECT_TRUE(recogniser.grammar.ends_with("\"lampa\",\"[unk]\"]"));
    EXPECT_GE(desktop.mainWindowRepaints, 2);
    hear("{\"text\" : \"lampa\"}");
    desktop.advanceBy(300);
    EXPECT_EQ(journal({JournalKind::input}), "key 65 down, key 65 up");

    recogniser.calls.clear();
    const std::uint64_t before = desktop.clock.now();
    OverlayEngineStop();
    EXPECT_LE(desktop.clock.now() - before, 250U);
    EXPECT_EQ(recogniser.calls, (Texts{"free", "free model"}));
    EXPECT_EQ(desktop.microphonesOpen, 0);
    EXPECT_EQ(status(), "aktywny") << "a stop is no reload";
}

TEST_F(Voice, SoundIsHeardInItsOrderThoughTheRecogniserStalls) {
    std::string said;
    for (char letter = 'a'; letter <= 'z'; ++letter) {
        said += letter;
        desktop.sound.emplace_back(3200, letter);
    }
    recogniser.stallMs = 250;
    listenWith({wheelOf(1)});
    desktop.advanceBy(10'000);
    EXPECT_TRUE(recogniser.heard.starts_with(said)) << recogniser.heard;
}

TEST_F(Voice, ARebuildReachesTheRecogniserOnceWithTheNewestTable) {
    listenWith({wheelOf(1)});
    recogniser.calls.clear();
    for (const char16_t* phrase : {u"pierwsze", u"drugie"}) {
        engineState.wheels = {{u"a", {spoken(phrase, 65)}}};
        rebuildPhraseTable();
    }
    desktop.advanceBy(1000);
    EXPECT_EQ(recogniser.calls, (Texts{"set"}));
    EXPECT_TRUE(
        recogniser.grammar.ends_with("\"dziewięćdziesiąt dziewięć\",\"kliknij dwa razy na dziewięćdziesiąt "
                                     "dziewięć\",\"kliknij prawy na dziewięćdziesiąt dziewięć\","
                                     "\"drugie\",\"[unk]\"]"));
    // A grammar that the library chokes on costs the recogniser, whose memory is then not to be touched
    // again.
    recogniser.setFaults = 1;
    recogniser.calls.clear();
    rebuildPhraseTable();
    desktop.advanceBy(300);
    EXPECT_EQ(recogniser.calls, (Texts{"set", "new at 16000"}));
    // Without another there is nothing left.
    recogniser.setFaults = 1;
    recogniser.refusedRecognisers = 1;
    recogniser.calls.clear();
    rebuildPhraseTable();
    desktop.advanceBy(300);
    EXPECT_EQ(recogniser.calls, (Texts{"set", "new at 16000", "free model"}));
    EXPECT_EQ(status(), "błąd inicjalizacji");
    EXPECT_EQ(desktop.microphonesOpen, 0);
    // One that fails to tell what it has heard is not touched again either.
    setVoice(false);
    setVoice(true);
    hear(nullptr);
    recogniser.calls.clear();
    setVoice(false);
    EXPECT_EQ(recogniser.calls, Texts{"free model"});
}

TEST_F(Voice, ALibraryThatHangsOutlivesTheStopAndDoesNoHarmToTheNextStart) {
    recogniser.modelLoadMs = 10'000;
    listenWith({{u"a", {spoken(u"lampa", 65)}}});
    EXPECT_EQ(status(), "ładowanie modelu…");
    const std::uint64_t before = desktop.clock.now();
    setVoice(false);
    EXPECT_EQ(desktop.clock.now() - before, 2000U);
    recogniser.modelLoadMs = 0;
    setVoice(true);
    EXPECT_EQ(status(), "aktywny");
    recogniser.calls.clear();
    desktop.advanceTo(15'000);
    EXPECT_EQ(recogniser.calls, (Texts{"new at 16000", "free", "free model"})) << "of the run that hung";
    EXPECT_EQ(status(), "aktywny");
    EXPECT_EQ(desktop.microphonesOpen, 1);
}

TEST_F(Voice, ALibraryThatLacksANameStopsTheThreadUnlessItCanDoWithoutUntilVoiceWasOff) {
    setVoice(false);
    ASSERT_TRUE(OverlayEngineStart());
    for (const auto& [name, function] : speechLibrary().functions) {
        const bool isOptional = name == "vosk_set_log_level" || name == "vosk_model_find_word";
        recogniser = {};
        desktop.libraries[u"simulated-speech"] = speechLibrary();
        desktop.libraries[u"simulated-speech"].functions.erase(name);
        setVoice(true);
        desktop.advanceBy(500);
        EXPECT_EQ(status(), isOptional ? "aktywny" : "błąd inicjalizacji") << name;
        EXPECT_EQ(recogniser.calls.size(), isOptional ? 2U : 0U) << name;
        setVoice(false);
    }
    desktop.libraries.clear();
    setVoice(true);
    EXPECT_EQ(status(), "brak simulated-speech");
    desktop.libraries[u"simulated-speech"] = speechLibrary();
    setVoice(true);
    EXPECT_EQ(status(), "brak simulated-speech") << "a failed start is not tried again by itself";
    setVoice(false);
    setVoice(true);
    EXPECT_EQ(status(), "aktywny");
}

TEST_F(Voice, AMissingMicrophoneIsTriedAgainEveryThreeSeconds) {
    desktop.hasMicrophone = false;
    listenWith({wheelOf(1)});
    EXPECT_EQ(status(), "brak mikrofonu");
    desktop.hasMicrophone = true;
    desktop.advanceTo(2'999);
    EXPECT_EQ(desktop.microphonesOpen, 0);
    desktop.advanceTo(3'001);
    EXPECT_EQ(status(), "aktywny");
    desktop.microphoneDelivers = false;
    recogniser.calls.clear();
    rebuildPhraseTable();
    desktop.advanceBy(500);
    EXPECT_EQ(recogniser.calls, (Texts{"set"})) << "without sound, too, the grammar follows the table";

    setVoice(false);
    desktop.hasMicrophone = false;
    setVoice(true);
    desktop.advanceBy(150);
    const std::uint64_t before = desktop.clock.now();
    OverlayEngineStop();
    EXPECT_LE(desktop.clock.now() - before, 100U);
}

TEST_F(Voice, SkippedPhrasesAreToldByTheTrayIconOfAStandaloneStartAtEachBuild) {
    folder.write("config.json", R"({"gazeEnabled": false})");
    recogniser.unknownWords = {"dwuklik"};
    ASSERT_TRUE(startEngine(true));
    desktop.settle();
    rebuildPhraseTable();
    desktop.advanceBy(500);
    const std::string balloon = "warning [Rotika — komendy głosowe] Pominięto frazy ze słowami spoza "
                                "słownika modelu: „dwuklik”";
    EXPECT_EQ(journal({JournalKind::tray}), "tray icon, " + balloon + ", " + balloon);
}

} // namespace
