#pragma once

#include <string>

namespace rotika {

/// Folder of the engine's files, without a trailing separator: the folder of the running executable, "."
/// where its path has no separator. On Linux, where that folder cannot be written (a system package), the
/// user's data folder "rotika", as decided at the first call, which also takes over what files an
/// administrator has prepared. Independent of the current directory. Any thread.
std::u16string programFolder();

/// A file or folder of the program, `name` being relative: in programFolder(), or on Linux, where it is not
/// there but beside the executable, there. Any thread.
std::u16string programFilePath(const std::u16string& name);

/// Where nobody but the user keeps files for a while, without a trailing separator.
std::u16string folderOfTemporaryFiles();

/// `folder`, the platform's separator, `name`.
std::u16string joinPath(const std::u16string& folder, const std::u16string& name);

/// Whether `path` is to be used as it stands, and not from the folder of the program: on Windows it holds a
/// colon, on Linux it begins with a slash. Any thread.
bool isFullPath(const std::u16string& path);

} // namespace rotika
