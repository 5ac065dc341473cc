#pragma once

#include "common/files.h"

#include <optional>
#include <string>
#include <vector>

namespace rotika {

// A file longer than longestFileBytes is neither read nor written.

/// As readWholeFile.
std::optional<std::string> readFileBytes(const std::u16string& path);

/// As replaceWholeFile.
bool replaceFileBytes(const std::u16string& path, const std::string& bytes);

/// Failures are silent, also when there is no such file.
void removeFile(const std::u16string& path);

/// Whether the attributes of `path` can be read; any failure counts as absent.
bool pathExists(const std::u16string& path);

/// Names of the folders in `folder`, in the system's order, without "." and "..". Empty when it cannot be
/// listed. Includes links to folders. Any thread.
std::vector<std::u16string> foldersIn(const std::u16string& folder);

} // namespace rotika
