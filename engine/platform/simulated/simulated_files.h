#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace rotika {

// The simulated machine's files lie on the real disk, in a folder that the test chooses, so that loaders and
// writers meet real bytes. Owner thread, unless said otherwise.

/// What programFolder() answers from now on. Without it, it is a folder that does not exist, so that a test
/// that forgets it writes nowhere.
void setSimulatedProgramFolder(const std::u16string& folder);

/// The same of folderOfTemporaryFiles().
void setSimulatedTemporaryFolder(const std::u16string& folder);

/// A disk with room for this many more bytes; a write that does not fit stops there and fails. Empty: no
/// limit.
void setSimulatedDiskRoom(std::optional<std::size_t> bytes);

/// Puts a character on a key of the layout, `keyAndShift` as virtualKeyOfCharacter answers it; noVirtualKey
/// takes the character off. The layout starts as the Polish programmer's.
void setSimulatedLayoutKey(char16_t character, std::uint16_t keyAndShift);

void resetSimulatedLayout();

/// No folders, no limit, the first layout.
void resetSimulatedFiles();

} // namespace rotika
