#pragma once

#include <string>

namespace rotika {

// A failed save is not reported, and the program may end with changes that are not saved: then the document
// is kept in a recovery file, in the folder of the program, or else in that of temporary files. The next
// opening of the editor loads it. Owner thread.

/// Keeps the document in a recovery file, or if none can be written, in memory until the editor is opened
/// again.
void keepEdits(const std::string& bytes);

/// Removes the recovery file after the document has been saved.
void dropKeptEdits();

/// The recovery file to load; empty if there is none.
std::u16string findKeptEdits();

} // namespace rotika
