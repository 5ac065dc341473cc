#pragma once

#include <string>

namespace rotika {

// Libraries that may be absent, bound at run time and never released. Any thread.

using LibraryHandle = struct PlatformLibrary*;

enum class LibrarySearch {
    /// The library's dependencies are searched in its own folder first, where the system supports that.
    ownFolderFirst,
    /// The system's default search.
    systemDefault,
};

/// Loads a full path, or a bare name by the system's search order, which never includes the current folder.
/// Null when it cannot be loaded; silent.
LibraryHandle loadLibrary(const std::u16string& pathOrName, LibrarySearch search);

/// Null when the library has no such export.
void* findLibraryFunction(LibraryHandle library, const char* name);

/// `path` in the encoding of a library's narrow file names.
std::string pathForLibrary(const std::u16string& path);

} // namespace rotika
