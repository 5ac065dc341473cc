#pragma once

#include <filesystem>

/// Folder of the running executable, without a trailing separator but for a root; "." if the system does not
/// tell. Any thread.
std::filesystem::path executableFolder();

/// Folder of config.json, the wheel files and all else that is the person's: on Windows that of the
/// executable; on Linux chosen for it by chooseDataFolder at the first call, so that a folder whose rights
/// change meanwhile does not switch the files under both halves. Never destroyed, since abandoned workers may
/// ask to the end of the process. Without a trailing separator but for a root. Any thread.
const std::filesystem::path& dataFolderPath();

/// `beside` if it may be written, else (a system package) the person's data folder "rotika". A folder of
/// theirs that has no config.json yet gets those files "*.json" of `beside` that it lacks: an administrator
/// may have prepared settings and wheels. Without a trailing separator. Any thread. Linux only: on Windows
/// the files always lie beside the executable.
std::filesystem::path chooseDataFolder(const std::filesystem::path& beside);
