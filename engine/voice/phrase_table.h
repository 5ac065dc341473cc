#pragma once

#include "model/phrase_entry.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace rotika {

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

} // namespace rotika
