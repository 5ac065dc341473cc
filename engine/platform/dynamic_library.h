#pragma once

#include <string>

namespace rotika {

// Libraries that may be absent, bound at run time and never released. Any thread.

using LibraryHandle = struct PlatformLibrary*;

enum class LibrarySearch {
    /// The libraries that it needs are looked for beside it first, where the system knows of such a search.
    besideItself,
    /// As the system looks for any library.
    asSystemDoes,
};

/// A full path, or a bare name for the system's own search order. Null when it cannot be loaded; silent.
LibraryHandle loadLibrary(const std::u16string& pathOrName, LibrarySearch search);

/// Null when the library has no such name.
void* findLibraryFunction(LibraryHandle library, const char* name);

/// `path` in the bytes under which a library opens it that knows no wide names.
std::string pathForLibrary(const std::u16string& path);

} // namespace rotika
