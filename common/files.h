#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

// Reading and replacing whole files (settings, wheels, voice functions), used by engine and shell. Any
// thread.

/// A longer file counts as unreadable and is not written. Hundreds of full wheels fit, and the parsed content
/// fits in the memory of any machine.
inline constexpr std::size_t longestFileBytes = std::size_t{16} << 20;

/// The bytes of a regular file, opened with sharing allowed; empty optional when it cannot be opened, is not
/// a regular file or is too long. A read error is not reported: the bytes read before it are returned.
std::optional<std::string> readWholeFile(const std::filesystem::path& path);

/// Replaces the content of `path`: writes a temporary file beside it, flushes it to disk and renames it over
/// `path`, so that a crash or a full disk leaves the old file or the new, never a truncated one. Where that
/// is not possible (no right to create files in the folder, a file that cannot be renamed over) the file is
/// written in place, and a failed write restores the old content. False when the content is unchanged.
bool replaceWholeFile(const std::filesystem::path& path, std::string_view bytes);
