#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace rotika {

// The simulated machine's files are real files in a folder that the test chooses. Owner thread.

/// Sets the result of programFolder(). By default it is a folder that does not exist, so that a test without
/// one cannot write anywhere.
void setSimulatedProgramFolder(const std::u16string& folder);

/// The same for folderOfTemporaryFiles().
void setSimulatedTemporaryFolder(const std::u16string& folder);

/// Sets the free disk space in bytes; a write that does not fit is cut off and fails. Nullopt: no limit.
void setSimulatedDiskRoom(std::optional<std::size_t> bytes);

/// Sets the result of virtualKeyOfCharacter() for a character; noVirtualKey removes the character. The
/// initial layout is the Polish programmer's.
void setSimulatedLayoutKey(char16_t character, std::uint16_t keyAndShift);

void resetSimulatedLayout();

/// No folders, no limit, the initial layout.
void resetSimulatedFiles();

} // namespace rotika
