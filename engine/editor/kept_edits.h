#pragma once

#include <string>

namespace rotika {

// A save that fails says nothing, so what it could not write is kept in a file of its own: in the folder of
// the program, or else in that of temporary files. The next opening of the editor begins on it. Owner thread.

/// Keeps the document in a file, or if no file can be made in memory until the editor is opened again.
void keepEdits(const std::string& bytes);

/// For the document that was just written where the user wanted it.
void dropKeptEdits();

/// The file that the editor is to begin on; empty if all was saved.
std::u16string findKeptEdits();

} // namespace rotika
