#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

// Whole files of settings, wheels and voice functions, read and replaced by one road in both halves of the
// program. Any thread.

/// A longer file counts as unreadable and is not written: hundreds of full wheels fit, and what is read of
/// it stays within the memory of any machine.
inline constexpr std::size_t longestFileBytes = std::size_t{16} << 20;

/// The bytes of a regular file, opened with sharing allowed; empty optional when it cannot be opened, is no
/// regular file or is too long. A read that stops early is not reported: what was read is the content.
std::optional<std::string> readWholeFile(const std::filesystem::path& path);

/// Replaces the content of `path`: a temporary file beside it, flushed to the disk, then renamed over it, so
/// that a crash or a full disk leaves the old file or the new, never a cut one. Where that road is closed (a
/// folder in which nothing may be made, a file that cannot be renamed over) the file is written in place, and
/// a write that fails there puts the old content back. False when the file holds what it held.
bool replaceWholeFile(const std::filesystem::path& path, std::string_view bytes);
