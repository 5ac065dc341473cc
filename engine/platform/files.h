#pragma once

#include "common/files.h"

#include <optional>
#include <string>
#include <vector>

namespace rotika {

// A file of more than longestFileBytes is neither read nor written.

/// As readWholeFile.
std::optional<std::string> readFileBytes(const std::u16string& path);

/// As replaceWholeFile.
bool replaceFileBytes(const std::u16string& path, const std::string& bytes);

/// Quietly, also if there is none.
void removeFile(const std::u16string& path);

/// Whether the system can tell the attributes of `path`; any failure counts as absent.
bool pathExists(const std::u16string& path);

/// Names of the folders in `folder`, in the order of the system's listing, without "." and "..". None when it
/// cannot be listed. Links to folders count, as the system follows them. Any thread.
std::vector<std::u16string> foldersIn(const std::u16string& folder);

} // namespace rotika
