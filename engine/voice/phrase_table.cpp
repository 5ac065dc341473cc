#include "voice/phrase_table.h"

#include "base/text.h"
#include "files/wheel_writer.h"
#include "model/engine_state.h"
#include "model/voice_commands.h"
#include "platform/fault_guard.h"

#include <algorithm>
#include <array>
#include <mutex>

namespace rotika {

namespace {

struct FixedPhrase {
    const char16_t* text;
    VoiceCommand command;
};

constexpr std::array<FixedPhrase, 14> fixedPhrases{{
    {u"pokaż koło", commandShowWheel},
    {u"schowaj koło", commandHideWheel},
    {u"następne koło", commandNextWheel},
    {u"poprzednie koło", commandPreviousWheel},
    {u"pokaż siatkę", commandShowGrid},
    {u"schowaj siatkę", commandHideGrid},
    {u"pokaż elementy", commandLabelElements},
    {u"pokaż elementy strony", commandLabelPage},
    {u"elementy strony", commandLabelPage},
    {u"ukryj elementy", commandHideElements},
    {u"schowaj elementy", commandHideElements},
    {u"kliknij", commandClick},
    {u"dwuklik", commandDoubleClick},
    {u"prawy klik", commandRightClick},
}};

constexpr std::array<const char16_t*, 20> wordsBelowTwenty{
    u"",           u"jeden",      u"dwa",          u"trzy",        u"cztery",
    u"pięć",       u"sześć",      u"siedem",       u"osiem",       u"dziewięć",
    u"dziesięć",   u"jedenaście", u"dwanaście",    u"trzynaście",  u"czternaście",
    u"piętnaście", u"szesnaście", u"siedemnaście", u"osiemnaście", u"dziewiętnaście",
};
constexpr std::array<const char16_t*, 10> wordsOfTens{
    u"",
    u"",
    u"dwadzieścia",
    u"trzydzieści",
    u"czterdzieści",
    u"pięćdziesiąt",
    u"sześćdziesiąt",
    u"siedemdziesiąt",
    u"osiemdziesiąt",
    u"dziewięćdziesiąt",
};

std::u16string numberWord(std::size_t number) {
    if (number < wordsBelowTwenty.size())
        return wordsBelowTwenty[number];
    const std::u16string tens = wordsOfTens[number / 10];
    const std::size_t ones = number % 10;
    return ones == 0 ? tens : tens + u' ' + wordsBelowTwenty[ones];
}

void addBuiltinPhrase(std::u16string_view text, std::int32_t command) {
    engineState.phraseTable.push_back({foldPhrase(text), command, -1, -1});
}

void addNumberPhrases() {
    for (std::int32_t number = 1; number <= largestSpokenNumber; ++number) {
        const std::u16string word = numberWord(static_cast<std::size_t>(number));
        addBuiltinPhrase(word, commandNumber + number);
        addBuiltinPhrase(u"kliknij dwa razy na " + word, commandDoubleClickNumber + number);
        addBuiltinPhrase(u"kliknij prawy na " + word, commandRightClickNumber + number);
    }
}

void addFunctionPhrases(const std::vector<WheelAction>& actions, std::int32_t wheelIndex) {
    std::int32_t actionIndex = 0;
    for (const WheelAction& action : actions) {
        if (!action.voice.empty())
            engineState.phraseTable.push_back({foldPhrase(action.voice), 0, wheelIndex, actionIndex});
        ++actionIndex;
    }
}

/// A word for which the library faults counts as known: the recogniser itself decides about its phrase. The
/// caller holds phraseLock.
bool isKnown(FindWordFunction findWord, void* model, const char* word) {
    struct Lookup {
        FindWordFunction findWord;
        void* model;
        const char* word;
        std::int32_t result;
    } lookup{findWord, model, word, 0};
    const bool survived = runGuarded(
        [](void* context) {
            Lookup& call = *static_cast<Lookup*>(context);
            call.result = call.findWord(call.model, call.word);
        },
        &lookup);
    return !survived || lookup.result >= 0;
}

/// Looks up the words, separated by spaces, up to the first unknown one. `word` is a buffer for reuse.
bool dictionaryContains(const std::string& phrase, void* model, FindWordFunction findWord,
                        std::string& word) {
    std::size_t begin = 0;
    while (begin < phrase.size()) {
        const std::size_t end = std::min(phrase.find(' ', begin), phrase.size());
        word.assign(phrase, begin, end - begin);
        if (!word.empty() && !isKnown(findWord, model, word.c_str()))
            return false;
        begin = end + 1;
    }
    return true;
}

void appendMember(std::string& grammar, const std::string& phrase) {
    grammar += '"' + escapeJsonString(phrase, JsonEscapes::quotesOnly) + "\",";
}

void appendSkipped(std::u16string& skipped, const std::string& phrase) {
    if (!skipped.empty())
        skipped += u", ";
    skipped += u'„';
    skipped += utf16FromUtf8(phrase);
    skipped += u'”';
}

} // namespace

std::string foldPhrase(std::u16string_view text) {
    return utf8FromUtf16(asciiLowered(std::u16string(text)));
}

void rebuildPhraseTable() {
    {
        const std::lock_guard lock(engineState.phraseLock);
        engineState.phraseTable.clear();
        for (const FixedPhrase& fixed : fixedPhrases)
            addBuiltinPhrase(fixed.text, fixed.command);
        addNumberPhrases();
        std::int32_t wheelIndex = 0;
        for (const Wheel& wheel : engineState.wheels)
            addFunctionPhrases(wheel.actions, wheelIndex++);
        addFunctionPhrases(engineState.voiceActions, VoiceActionsWheel);
    }
    // Last, so that a reader of the new number finds the new table.
    ++engineState.phraseGeneration;
}

std::string buildGrammar(void* model, FindWordFunction findWord, std::u16string* skipped) {
    const bool isChecked = model != nullptr && findWord != nullptr;
    std::string grammar = "[";
    std::string word;
    {
        const std::lock_guard lock(engineState.phraseLock);
        for (const PhraseEntry& entry : engineState.phraseTable) {
            if (!isChecked || dictionaryContains(entry.phrase, model, findWord, word))
                appendMember(grammar, entry.phrase);
            else if (skipped != nullptr)
                appendSkipped(*skipped, entry.phrase);
        }
    }
    grammar += "\"[unk]\"]";
    return grammar;
}

std::int32_t phraseCount() {
    const std::lock_guard lock(engineState.phraseLock);
    return static_cast<std::int32_t>(engineState.phraseTable.size());
}

bool findPhrase(std::string_view text, PhraseEntry& found) {
    const std::lock_guard lock(engineState.phraseLock);
    const auto row = std::ranges::find(engineState.phraseTable, text, &PhraseEntry::phrase);
    if (row == engineState.phraseTable.end())
        return false;
    found.command = row->command;
    found.wheelIndex = row->wheelIndex;
    found.actionIndex = row->actionIndex;
    return true;
}

} // namespace rotika
