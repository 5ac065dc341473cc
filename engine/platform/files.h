#pragma once

#include <optional>
#include <string>
#include <vector>

/// The bytes of a file, read with sharing allowed; empty optional when it cannot be opened. A read that stops
/// early is not reported: what was read is the content. A folder cannot be opened. Any thread.
std::optional<std::string> readFileBytes(const std::u16string& path);

/// Replaces the content of `path` as a whole: a temporary file beside it, flushed, then renamed over it, so
/// that a crash or a full disk leaves the old file or the new, never a cut one. False when nothing was
/// changed.
bool replaceFileBytes(const std::u16string& path, const std::string& bytes);

/// Whether the system can tell the attributes of `path`; any failure counts as absent.
bool pathExists(const std::u16string& path);

/// Names of the folders in `folder`, in the order of the system's listing, without "." and "..". None when it
/// cannot be listed. Links to folders count, as the system follows them. Any thread.
std::vector<std::u16string> foldersIn(const std::u16string& folder);
