#include "core/lifecycle.h"
#include "engine_test.h"
#include "files/wheel_files.h"
#include "platform/clock.h"
#include "voice/phrase_table.h"
#include "voice/speech_library.h"

#include <deque>
#include <map>
#include <set>

using namespace rotika;

namespace {

/// State of the fake recogniser, and a record of its calls.
struct Recogniser {
    std::uint32_t modelLoadMs = 0;
    bool isRefused = false;          // creating one fails
    bool setFaults = false;          // setting the next grammar faults
    std::string received;            // the first byte of each buffer
    std::deque<const char*> answers; // one per buffer, null for a fault; none ready when empty
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
    return recogniser.isRefused ? nullptr : &recogniser;
}

void setGrammar(void*, const char* grammar) {
    recogniser.calls.push_back("set");
    if (std::exchange(recogniser.setFaults, false))
        throw SimulatedFault();
    recogniser.grammar = grammar;
}

std::int32_t acceptSound(void*, const char* sound, std::int32_t) {
    recogniser.received += *sound;
    sleepMs(recogniser.received.size() % 7 == 0 ? 250 : 0); // stalls on every seventh buffer
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

class Voice : public EngineTest {
protected:
    Voice() {
        recogniser = {};
        const auto freeModel = [](void*) { recogniser.calls.push_back("free model"); };
        const auto freeRecognizer = [](void*) { recogniser.calls.push_back("free"); };
        const auto add = [this](const char* name, auto* function) {
            desktop.libraries[u"simulated-speech"].functions["vosk_"s + name] =
                reinterpret_cast<void*>(function);
        };
        add("model_new", newModel);
        add("model_free", +freeModel);
        add("recognizer_new_grm", newRecognizer);
        add("recognizer_set_grm", setGrammar);
        add("recognizer_accept_waveform", acceptSound);
        add("recognizer_result", takeResult);
        add("recognizer_free", +freeRecognizer);
        add("model_find_word", findWord);
    }

    void start(const std::string& settings = "") {
        configure(on + settings);
        ASSERT_TRUE(startEngine(true));
        desktop.settle();
    }

    /// The recogniser's calls after a change of the table.
    Texts rebuild() {
        recogniser.calls.clear();
        rebuildPhraseTable();
        desktop.advanceBy(500);
        return recogniser.calls;
    }

    static std::string status() { return textOf(OverlayVoiceStatus()); }

    const std::string on = R"("voiceEnabled": true,)";
};

constexpr char phrases[] = R"(
    pokaż koło -> 1  schowaj koło -> 2  następne koło -> 3  poprzednie koło -> 4  pokaż siatkę -> 5
    schowaj siatkę -> 6  pokaż elementy -> 10  pokaż elementy strony -> 12  elementy strony -> 12
    ukryj elementy -> 11  schowaj elementy -> 11  kliknij -> 7  dwuklik -> 8  prawy klik -> 9  jeden -> 101
    dziewiętnaście -> 119  dwadzieścia -> 120  kliknij dwa razy na dwadzieścia jeden -> 321
    kliknij prawy na dziewięćdziesiąt dziewięć -> 599  kliknij Łódź -> 0 0 1  dwa "razy\ -> 0 1 0
    notatnik -> 0 -2 0)";

TEST_F(Voice, TheTableHoldsFixedPhrasesNumbersFieldsAndVoiceFunctionsAndTheGrammarThoseThatTheModelKnows) {
    engineState.wheels = {{u"a", {field("a"), field("b", u"", u"KLIKNIJ Łódź")}},
                          {u"b", {field("c", u"", u"dwa \"razy\\"), field("d", u"", u" ")}}};
    engineState.voiceActions = {field("d", u"", u"Notatnik")};
    rebuildPhraseTable();
    EXPECT_EQ(OverlayVoicePhraseCount(), 315);
    for (const auto& [phrase, place] : rowsOf(phrases)) {
        PhraseEntry found;
        EXPECT_TRUE(findPhrase(phrase, found)) << phrase;
        std::string where = std::to_string(found.command);
        if (found.command == 0)
            where += " " + std::to_string(found.wheelIndex) + " " + std::to_string(found.actionIndex);
        EXPECT_EQ(where, place) << phrase;
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
    const FindWordFunction faulty = [](void*, const char*) -> std::int32_t { throw SimulatedFault(); };
    EXPECT_EQ(buildGrammar(&recogniser, faulty, nullptr), all);
    for (const auto& [answer, text] : rowsOf(R"(
        {"text" : "pokaż koło"} -> pokaż koło  {"partial" : "x", "text":"a"} -> a  {"text" : ""} ->
        {"text" : "cut ->  {"text" : 5} ->  "text" ->)"))
        EXPECT_EQ(recognisedText(answer.c_str()), text);
    EXPECT_EQ(recognisedText(nullptr), "");
}

TEST_F(Voice, ThePhrasesOfTheShippedExamplesAreNew) {
    rebuildPhraseTable(); // with nothing but what is built in
    std::map<std::string, std::string> meanings;
    for (const char16_t* name : {u"/głos.json", u"/koła.json"}) {
        std::u16string problems;
        std::vector<Wheel> wheels;
        EXPECT_TRUE(loadWheelFile(utf16FromUtf8(ROTIKA_EXAMPLES) + name, wheels, problems))
            << utf8FromUtf16(problems);
        for (const Wheel& wheel : wheels)
            for (const WheelAction& action : wheel.actions) {
                WheelAction nameless = action;
                nameless.name.clear();
                const std::string phrase = foldPhrase(action.voice), meaning = describe({nameless});
                PhraseEntry found;
                EXPECT_FALSE(findPhrase(phrase, found)) << phrase;
                if (!phrase.empty()) {
                    EXPECT_EQ(meanings.emplace(phrase, meaning).first->second, meaning) << phrase;
                }
            }
    }
    EXPECT_GT(meanings.size(), 80U);
}

TEST_F(Voice, UsesTheConfiguredModelAndRecognisesSoundInOrder) {
    std::string said;
    for (char letter = 'a'; letter <= 'z'; ++letter)
        desktop.sound.emplace_back(3200, said.append(1, letter).back());
    folder.write("default.json", R"({"actions": [{"key": "a", "voice": "lampa"}]})");
    start(R"("voiceModel": "pl-model", "voiceDllPath": "/brak/lib.so",)");
    desktop.advanceBy(10'000);
    EXPECT_EQ(status(), "aktywny");
    EXPECT_EQ(desktop.libraryAttempts,
              (std::vector{u"/brak/lib.so"s, folder.path("simulated-speech"), u"simulated-speech"s}));
    EXPECT_EQ(recogniser.calls, (Texts{"model " + utf8FromUtf16(folder.path("pl-model")), "new at 16000"}));
    EXPECT_TRUE(recogniser.grammar.ends_with("\"lampa\",\"przełącz okno\",\"[unk]\"]")) << recogniser.grammar;
    EXPECT_TRUE(recogniser.received.starts_with(said)) << recogniser.received;
    recogniser.answers = {"{\"text\" : \"lampa\"}"};
    desktop.advanceBy(1000);
    EXPECT_EQ(journal(JournalKind::input), "key 65 down, key 65 up");
    OverlayEngineStop();
    EXPECT_EQ(desktop.microphonesOpen, 0);
}

TEST_F(Voice, ARebuildUpdatesTheRecogniserOnceAndAFaultedRecogniserIsNotUsedAgain) {
    start();
    engineState.voiceActions = {field("a", u"", u"drugie")};
    rebuildPhraseTable();
    EXPECT_EQ(rebuild(), Texts{"set"});
    EXPECT_TRUE(recogniser.grammar.ends_with("\"drugie\",\"[unk]\"]"));
    desktop.microphoneDelivers = false;
    recogniser.setFaults = true;
    EXPECT_EQ(rebuild(), (Texts{"set", "new at 16000"})) << "also without sound";
    recogniser.setFaults = recogniser.isRefused = true;
    EXPECT_EQ(rebuild(), (Texts{"set", "new at 16000", "free model"}));
    EXPECT_EQ(status(), "błąd inicjalizacji");
    recogniser.isRefused = false;
    desktop.microphoneDelivers = true;
    reload();
    reload(on);
    recogniser.answers = {nullptr};
    desktop.advanceBy(400);
    recogniser.calls.clear();
    reload();
    EXPECT_EQ(recogniser.calls, Texts{"free model"});
}

TEST_F(Voice, AStopAbandonsAHangingLibraryAndAMissingMicrophoneIsRetried) {
    recogniser.modelLoadMs = 10'000;
    start();
    reload();
    EXPECT_EQ(desktop.clock.now(), 2000U);
    recogniser.modelLoadMs = 0;
    reload(on);
    recogniser.calls.clear();
    desktop.advanceTo(15'000);
    EXPECT_EQ(recogniser.calls, (Texts{"new at 16000", "free", "free model"})) << "of the run that hung";
    EXPECT_EQ(status(), "aktywny");
    EXPECT_EQ(desktop.microphonesOpen, 1);
    reload();
    desktop.hasMicrophone = false;
    reload(on);
    EXPECT_EQ(status(), "brak mikrofonu");
    desktop.hasMicrophone = true;
    desktop.advanceBy(2'999);
    EXPECT_EQ(desktop.microphonesOpen, 0);
    desktop.advanceBy(2);
    EXPECT_EQ(status(), "aktywny");
}

TEST_F(Voice, AStandaloneEngineReportsSkippedPhrasesInATruncatedTrayBalloonAfterEachRebuild) {
    recogniser.unknownWords = {"dwuklik"};
    start();
    engineState.voiceActions = {field("a", u"", u"dwuklik " + std::u16string(300, u'x'))};
    rebuild();
    const std::string balloon =
        "warning [Rotika — komendy głosowe] Pominięto frazy ze słowami spoza słownika "
        "modelu: „dwuklik”";
    EXPECT_EQ(journal(JournalKind::tray),
              "tray icon, " + balloon + ", " + balloon + ", „dwuklik " + std::string(185, 'x'));
}

} // namespace
