#pragma once

#include <string>

namespace rotika {

// The simulated machine's files are real files in a folder that the test chooses. Any thread.

/// Sets the result of programFolder(). By default it is a folder that does not exist, so that a test without
/// one cannot write anywhere.
void setSimulatedProgramFolder(const std::u16string& folder);

/// The same for folderOfTemporaryFiles().
void setSimulatedTemporaryFolder(const std::u16string& folder);

/// Both folders are the missing one again.
void resetSimulatedPaths();

} // namespace rotika
