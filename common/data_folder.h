#pragma once

#include <filesystem>

/// Folder of the running executable, without a trailing separator (a root keeps its own); "." if the
/// system cannot report it. Any thread.
std::filesystem::path executableFolder();

/// Folder of config.json, the wheel files and all other user files: on Windows the folder of the executable;
/// on Linux chosen by chooseDataFolder at the first call and then fixed, so that a later change of access
/// rights cannot switch files within a run. Never destroyed, since abandoned workers may call this until the
/// process ends. Without a trailing separator (a root keeps its own). Any thread.
const std::filesystem::path& dataFolderPath();

/// `beside` if it is writable and has no file "installed", else (a system package, whose folder not even root
/// may add to) the user's data folder "rotika". In that one the folder for the user's own icons is made, and
/// while it has no config.json, missing "*.json" files are copied to it from `beside`: an administrator may
/// have prepared settings and wheels. Without a trailing separator. Any thread. Linux only: on Windows the
/// files are always beside the executable.
std::filesystem::path chooseDataFolder(const std::filesystem::path& beside);
