#pragma once

#include <filesystem>

/// Without a trailing separator; "." if the system does not tell. Any thread.
std::filesystem::path executableFolder();

/// `beside` if it may be written, else (a system package) the person's data folder "rotika". A folder of
/// theirs that has no config.json yet gets those files "*.json" of `beside` that it lacks: an administrator
/// may have prepared settings and wheels. Without a trailing separator. Any thread.
std::filesystem::path chooseDataFolder(const std::filesystem::path& beside);

/// Folder of the program's own files: chosen for that of the running executable, at the first call, so that a
/// folder whose rights change meanwhile does not switch the files under both halves. Any thread.
const std::filesystem::path& decidedDataFolder();
