#pragma once

#include <string>

/// `path` in the form that the system does not hold to MAX_PATH, if it comes near to that: also a temporary
/// name that is a little longer has its room then. Shorter ones stay as they are. Any thread.
std::wstring unlimitedPath(const std::wstring& path);

/// The form with names of eight letters and a suffix of three; empty where the system keeps none, or there is
/// no such file. Any thread.
std::wstring shortPath(const std::wstring& path);
