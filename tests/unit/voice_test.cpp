#include "core/lifecycle.h"
#include "engine_test.h"
#include "platform/clock.h"
#include "voice/phrase_table.h"
#include "voice/speech_library.h"
#include "voice/voice_dispatch.h"

#include <deque>
#include <set>

namespace {

/// What the recogniser of the test does, and what was asked of it.
struct Recogniser {
    std::uint32_t modelLoadMs = 0;
    int refusedRecognisers = 0; // this many come back null
    int setFaults = 0;
    std::string heard;               // the first byte of each buffer
    std::deque<const char*> answers; // one for each buffer, null for a fault; then none is ready
    std::set<std::string> unknownWords;
    Texts calls;
    std::string grammar;
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
    sleepMs(recogniser.heard.size() % 7 == 0 ? 250 : 0); // now and then it stalls
    return recogniser.answers.empty() ? 0 : 1;
}

const char* takeResult(void*) {
    const char* answer = recogniser.answers.front();
    recogniser.answers.pop_front();
    return answer != nullptr ? answer : throw SimulatedFault();
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

    /// Starts the engine with voice on and a wheel of these fields.
    void listen(std::vector<WheelAction> fields) {
        configure("\"voiceEnabled\": true,");
        ASSERT_TRUE(OverlayEngineStart());
        engineState.wheels = {{u"a", std::move(fields)}};
        engineState.voiceActions.clear();
        rebuildPhraseTable();
        desktop.advanceBy(300);
        recogniser.calls.clear();
    }

    void setVoice(bool enabled) {
        configure(enabled ? "\"voiceEnabled\": true," : "");
        OverlayReloadConfig();
        desktop.settle();
    }

    /// What the recogniser is asked for when the table changes.
    Texts rebuild() {
        recogniser.calls.clear();
        rebuildPhraseTable();
        desktop.advanceBy(500);
        return recogniser.calls;
    }

    static std::string status() { return textOf(OverlayVoiceStatus()); }
};

constexpr char phrases[] = R"(
    pokaż koło -> 1  schowaj koło -> 2  następne koło -> 3  poprzednie koło -> 4  pokaż siatkę -> 5
    schowaj siatkę -> 6  pokaż elementy -> 10  pokaż elementy strony -> 12  elementy strony -> 12
    ukryj elementy -> 11  schowaj elementy -> 11  kliknij -> 7  dwuklik -> 8  prawy klik -> 9  jeden -> 101
    dziewiętnaście -> 119  dwadzieścia -> 120  kliknij dwa razy na dwadzieścia jeden -> 321
    kliknij prawy na dziewięćdziesiąt dziewięć -> 599  kliknij Łódź -> 0 0 1  dwa "razy\ -> 0 1 0
    notatnik -> 0 -2 0)";

TEST_F(Voice, TheTableHoldsFixedPhrasesNumbersFieldsAndVoiceFunctionsAndTheGrammarAllThatTheModelKnows) {
    engineState.wheels = {{u"a", {field("a"), field("b", u"", u"KLIKNIJ Łódź")}},
                          {u"b", {field("c", u"", u"dwa \"razy\\"), field("d", u"", u" ")}}};
    engineState.voiceActions = {field("d", u"", u"Notatnik")};
    rebuildPhraseTable();
    EXPECT_EQ(OverlayVoicePhraseCount(), 315);
    for (const auto& [phrase, place] : rowsOf(phrases)) {
        PhraseEntry entry;
        EXPECT_TRUE(findPhrase(phrase, entry)) << phrase;
        std::string found = std::to_string(entry.command);
        if (entry.command == 0)
            found += " " + std::to_string(entry.wheelIndex) + " " + std::to_string(entry.actionIndex);
        EXPECT_EQ(found, place) << phrase;
    }
    const std::string all = buildGrammar(nullptr, findWord, nullptr);
    EXPECT_TRUE(all.starts_with("[\"pokaż koło\",\"schowaj koło\",")) << all;
    EXPECT_TRUE(all.ends_with(",\"kliknij Łódź\",\"dwa \\\"razy\\\\\",\" \",\"notatnik\",\"[unk]\"]")) << all;
    recogniser.unknownWords = {"", "\"razy\\", "kliknij", "dwuklik"};
    std::u16string skipped;
    const std::string known = buildGrammar(&recogniser, findWord, &skipped);
    EXPECT_EQ(known.find("kliknij"), known.npos);
    EXPECT_TRUE(known.ends_with(",\"dziewięćdziesiąt dziewięć\",\" \",\"notatnik\",\"[unk]\"]")) << known;
    EXPECT_TRUE(skipped.starts_with(u"„kliknij”, „dwuklik”, „kliknij dwa razy na jeden”, "));
    EXPECT_TRUE(skipped.ends_with(u", „kliknij Łódź”, „dwa \"razy\\”"));
    EXPECT_EQ(OverlayVoicePhraseCount(), 315) << "they keep their rows";
    EXPECT_EQ(buildGrammar(
                  &recogniser, [](void*, const char*) -> std::int32_t { throw SimulatedFault(); }, nullptr),
              all);
}

/// Is voiceGlobal set, is the wheel open and what is said; what is pressed first, and the wheel afterwards.
constexpr char utterances[] = R"(
    global closed :lampa -> key 65 closed  local closed :lampa -> no closed
    local open :lampa -> key 65 closed  local closed :radio -> key 68 closed
    global open :radio -> key 68 closed  local closed :kliknij -> button 0 closed
    global closed : -> no closed  global open :lampa [unk] -> no open  global open :Lampa -> no open
    global closed : lampa -> no closed  global open :dziewięć -> no open)";

TEST_F(Voice, OnlyTheWholeTextActsAndVoiceGlobalGovernsFieldsAlone) {
    startWith({{u"a", {field("a", u"", u"lampa"), field("b", u"", u"kliknij")}},
               {u"b", {field("c", u"", u"Lampa")}}});
    engineState.voiceActions = {field("d", u"", u"radio"), field("e", u"", u"lampa")};
    rebuildPhraseTable();
    for (const auto& [what, result] : rowsOf(utterances)) {
        engineConfig.voiceGlobal = what.starts_with("global");
        if (OverlayIsWheelVisible() != (what.find(" open ") != what.npos))
            OverlayToggleWheel();
        desktop.clearJournal();
        dispatchRecognisedText(what.substr(what.find(':') + 1));
        desktop.advanceBy(1000);
        const std::string pressed = journal(JournalKind::input).empty() ? "no" : journal(JournalKind::input).substr(0, journal(JournalKind::input).find(" down"));
        EXPECT_EQ(pressed + (OverlayIsWheelVisible() ? " open" : " closed"), result) << what;
    }
    for (const auto& [answer, text] : rowsOf(R"(
        {"text" : "pokaż koło"} -> pokaż koło  {"partial" : "x", "text":"a"} -> a  {"text" : ""} ->
        {"text" : "cut ->  {"text" : 5} ->  "text" ->)"))
        EXPECT_EQ(recognisedText(answer.c_str()), text);
    EXPECT_EQ(recognisedText(nullptr), "");
}

TEST_F(Voice, ListensThroughTheModelItWasGivenAndActsOnWhatItHearsInItsOrder) {
    std::string said;
    for (char letter = 'a'; letter <= 'z'; ++letter) {
        said += letter;
        desktop.sound.emplace_back(3200, letter);
    }
    configure(R"("voiceEnabled": true, "voiceModel": "pl-model", "voiceDllPath": "/brak/lib.so",)");
    folder.write("default.json", R"({"actions": [{"key": "a", "voice": "lampa"}]})");
    ASSERT_TRUE(OverlayEngineStart());
    desktop.advanceBy(10'000);
    EXPECT_EQ(status(), "aktywny");
    EXPECT_EQ(desktop.libraryAttempts,
              (std::vector{u"/brak/lib.so"s, folder.path("simulated-speech"), u"simulated-speech"s}));
    EXPECT_EQ(recogniser.calls, (Texts{"model " + utf8FromUtf16(folder.path("pl-model")), "new at 16000"}));
    EXPECT_TRUE(recogniser.grammar.ends_with("\"lampa\",\"przełącz okno\",\"[unk]\"]")) << recogniser.grammar;
    EXPECT_TRUE(recogniser.heard.starts_with(said)) << recogniser.heard;
    recogniser.answers = {"{\"text\" : \"lampa\"}"};
    desktop.advanceBy(1000);
    EXPECT_EQ(journal(JournalKind::input), "key 65 down, key 65 up");
    recogniser.calls.clear();
    const std::uint64_t before = desktop.clock.now();
    OverlayEngineStop();
    EXPECT_LE(desktop.clock.now() - before, 500U);
    EXPECT_EQ(recogniser.calls, (Texts{"free", "free model"}));
    EXPECT_EQ(desktop.microphonesOpen, 0);
}

TEST_F(Voice, ARebuildReachesTheRecogniserOnceAndOneThatHasFaultedIsNotTouchedAgain) {
    listen({field("a", u"", u"pierwsze")});
    engineState.wheels = {{u"a", {field("a", u"", u"drugie")}}};
    rebuildPhraseTable();
    EXPECT_EQ(rebuild(), Texts{"set"});
    EXPECT_TRUE(recogniser.grammar.ends_with("\"drugie\",\"[unk]\"]"));
    desktop.microphoneDelivers = false;
    EXPECT_EQ(rebuild(), Texts{"set"}) << "without sound, too, the grammar follows the table";
    recogniser.setFaults = 1;
    EXPECT_EQ(rebuild(), (Texts{"set", "new at 16000"}));
    recogniser.setFaults = 1;
    recogniser.refusedRecognisers = 1;
    EXPECT_EQ(rebuild(), (Texts{"set", "new at 16000", "free model"}))
        << "without another there is nothing left";
    EXPECT_EQ(status(), "błąd inicjalizacji");
    EXPECT_EQ(desktop.microphonesOpen, 0);
    desktop.microphoneDelivers = true;
    setVoice(false);
    setVoice(true);
    recogniser.answers = {nullptr};
    desktop.advanceBy(400);
    recogniser.calls.clear();
    setVoice(false);
    EXPECT_EQ(recogniser.calls, Texts{"free model"});
}

TEST_F(Voice, AStopNeitherWaitsForALibraryThatHangsNorForAMissingMicrophoneThatIsTriedAgain) {
    recogniser.modelLoadMs = 10'000;
    listen({field("a")});
    EXPECT_EQ(status(), "ładowanie modelu…");
    std::uint64_t before = desktop.clock.now();
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
    setVoice(false);
    desktop.hasMicrophone = false;
    setVoice(true);
    EXPECT_EQ(status(), "brak mikrofonu");
    before = desktop.clock.now();
    desktop.hasMicrophone = true;
    desktop.advanceBy(2'999);
    EXPECT_EQ(desktop.microphonesOpen, 0);
    desktop.advanceBy(2);
    EXPECT_EQ(status(), "aktywny");
    setVoice(false);
    desktop.hasMicrophone = false;
    setVoice(true);
    desktop.advanceBy(150);
    before = desktop.clock.now();
    OverlayEngineStop();
    EXPECT_LE(desktop.clock.now() - before, 100U);
}

TEST_F(Voice, ALibraryThatLacksANameStopsTheThreadUnlessItCanDoWithoutUntilVoiceWasOff) {
    configure();
    ASSERT_TRUE(OverlayEngineStart());
    for (const auto& [name, function] : speechLibrary().functions) {
        const bool isOptional = name == "vosk_set_log_level" || name == "vosk_model_find_word";
        desktop.libraries[u"simulated-speech"].functions.erase(name);
        setVoice(true);
        desktop.libraries[u"simulated-speech"] = speechLibrary();
        setVoice(true); // a failed start is not tried again by itself
        EXPECT_EQ(status(), isOptional ? "aktywny" : "błąd inicjalizacji") << name;
        setVoice(false);
    }
}

TEST_F(Voice, SkippedPhrasesAreToldByTheTrayIconOfAStandaloneStartAtEachBuildCutToItsRoom) {
    configure("\"voiceEnabled\": true,");
    recogniser.unknownWords = {"dwuklik"};
    ASSERT_TRUE(startEngine(true));
    desktop.settle();
    engineState.voiceActions = {field("a", u"", u"dwuklik " + std::u16string(300, u'x'))};
    rebuildPhraseTable();
    desktop.advanceBy(500);
    const std::string text = "Pominięto frazy ze słowami spoza słownika modelu: „dwuklik”";
    const std::string balloon = "warning [Rotika — komendy głosowe] " + text;
    EXPECT_EQ(journal(JournalKind::tray),
              "tray icon, " + balloon + ", " + balloon + ", „dwuklik " + std::string(185, 'x'));
}

} // namespace
