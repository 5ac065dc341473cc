#pragma once

#include <string>

/// `path` with the prefix that lifts the MAX_PATH limit, if it comes near the limit, with a margin for a
/// longer temporary name. Shorter paths are returned unchanged. Any thread.
std::wstring unlimitedPath(const std::wstring& path);

/// The 8.3 form; empty where the volume has none, or there is no such file. Any thread.
std::wstring shortPath(const std::wstring& path);
