#pragma once

#include <filesystem>

/// Folder of the program's own files, without a trailing separator: that of the running executable, or where
/// it may not be written (a system package) the person's data folder "rotika". Decided at the first call, so
/// that a folder whose rights change meanwhile does not switch the files under both halves. Any thread.
const std::filesystem::path& decidedDataFolder();
