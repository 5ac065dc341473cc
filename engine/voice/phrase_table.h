#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// One thing that can be said.
struct PhraseEntry {
    std::string phrase;            // UTF-8, folded; what the recogniser answers, byte for byte
    std::int32_t command = 0;      // id of a fixed command; 0 for a phrase that runs a function
    std::int32_t wheelIndex = -1;  // into the wheels, VoiceActionsWheel, or -1 for a fixed command
    std::int32_t actionIndex = -1; // into that wheel's fields or the voice functions; -1 for a fixed command
};

/// All that can be said. Row order is the order of the grammar, and the first of equal phrases wins.
using PhraseTable = std::vector<PhraseEntry>;

/// wheelIndex of the functions that have no field on a wheel.
inline constexpr std::int32_t VoiceActionsWheel = -2;

/// Fills engineState's table anew: fixed commands, numbers, the fields of all wheels, the voice functions.
/// Owner thread.
void rebuildPhraseTable();

/// ASCII letters in lower case, as UTF-8; nothing else is changed.
std::string foldPhrase(std::u16string_view text);

/// The recogniser's test whether a word stands in its model's dictionary: negative if not.
using FindWordFunction = std::int32_t (*)(void* model, const char* word);

/// A JSON array of all phrases, in table order, with "[unk]" behind them. With both a model and its test,
/// phrases that hold a word outside the dictionary are left out and, if `skipped` is given, named in it, each
/// in Polish quotation marks. Any thread; holds phraseLock throughout.
std::string buildGrammar(void* model, FindWordFunction findWord, std::u16string* skipped);

/// Number of rows. Any thread.
std::int32_t phraseCount();

/// The first row of exactly that phrase; false if there is none. `found` gets all but the phrase. Any thread.
bool findPhrase(std::string_view text, PhraseEntry& found);
