#pragma once

#include "platform/dynamic_library.h"
#include "platform/paths.h"

#include <string>

namespace rotika {

/// Loads a library that may be absent: from the configured path if there is one, else from the folder of the
/// program, else by the system's search order; null if not found. `search` applies to the first two.
inline LibraryHandle loadOptionalLibrary(const std::u16string& configuredPath, const std::u16string& name,
                                         LibrarySearch search) {
    LibraryHandle library = configuredPath.empty() ? nullptr : loadLibrary(configuredPath, search);
    if (library == nullptr)
        library = loadLibrary(programFilePath(name), search);
    return library != nullptr ? library : loadLibrary(name, LibrarySearch::systemDefault);
}

/// Sets `function`, a function pointer, to the library's export `name`; false and null when there is none.
template <typename Function>
bool bindFunction(LibraryHandle library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(findLibraryFunction(library, name));
    return function != nullptr;
}

} // namespace rotika
