#pragma once

#include <string>

namespace rotika {

/// dataFolderPath(), the folder of the engine's files, without a trailing separator. Independent of the
/// current directory. Any thread.
std::u16string programFolder();

/// Full path of a file or folder of the program, given its relative `name`: in programFolder(), or on Linux,
/// if it exists only beside the executable, there. Any thread.
std::u16string programFilePath(const std::u16string& name);

/// The user's private folder for temporary files, without a trailing separator.
std::u16string folderOfTemporaryFiles();

/// `folder`, the platform's separator, `name`.
std::u16string joinPath(const std::u16string& folder, const std::u16string& name);

/// Whether `path` is used unchanged and not relative to the folder of the program: on Windows it contains a
/// colon, on Linux it begins with a slash. Any thread.
bool isFullPath(const std::u16string& path);

} // namespace rotika
