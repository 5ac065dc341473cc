#pragma once

#include "model/phrase_entry.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace rotika {

/// Rebuilds engineState's table: fixed commands, numbers, the fields of all wheels, the voice functions.
/// Owner thread.
void rebuildPhraseTable();

/// The text in UTF-8 with ASCII letters in lower case; nothing else is changed.
std::string foldPhrase(std::u16string_view text);

/// The recogniser's dictionary lookup: negative if the model does not contain the word.
using FindWordFunction = std::int32_t (*)(void* model, const char* word);

/// A JSON array of all phrases, in table order, followed by "[unk]". With both a model and a lookup, phrases
/// with a word outside the dictionary are left out and, if `skipped` is given, listed in it, each in Polish
/// quotation marks. Any thread; holds phraseLock.
std::string buildGrammar(void* model, FindWordFunction findWord, std::u16string* skipped);

/// Number of rows. Any thread.
std::int32_t phraseCount();

/// The first row of exactly that phrase; false if there is none. Copies all but the phrase to `found`. Any
/// thread.
bool findPhrase(std::string_view text, PhraseEntry& found);

} // namespace rotika
