#pragma once

#include "platform/dynamic_library.h"
#include "platform/paths.h"

#include <string>

namespace rotika {

/// Loads a library that may be absent: from the configured path if there is one, else from the folder of the
/// program, else from where the system looks; null if from nowhere. `search` is for the first two.
inline LibraryHandle loadOptionalLibrary(const std::u16string& configuredPath, const std::u16string& name,
                                         LibrarySearch search) {
    LibraryHandle library = configuredPath.empty() ? nullptr : loadLibrary(configuredPath, search);
    if (library == nullptr)
        library = loadLibrary(programFilePath(name), search);
    return library != nullptr ? library : loadLibrary(name, LibrarySearch::asSystemDoes);
}

/// Sets `function`, a pointer to a function, to what the library exports under `name`; false and null when it
/// has no such name.
template <typename Function>
bool bindFunction(LibraryHandle library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(findLibraryFunction(library, name));
    return function != nullptr;
}

} // namespace rotika
