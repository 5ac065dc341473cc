#include "platform/dynamic_library.h"

#include "base/text.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

// No lock: only workers load libraries, and only one thread runs at a time.

LibraryHandle loadLibrary(const std::u16string& pathOrName, LibrarySearch) {
    SimulatedDesktop& desktop = simulatedDesktop();
    desktop.libraryAttempts.push_back(pathOrName);
    const auto found = desktop.libraries.find(pathOrName);
    return found == desktop.libraries.end() ? nullptr : reinterpret_cast<LibraryHandle>(&found->second);
}

void* findLibraryFunction(LibraryHandle library, const char* name) {
    const auto& functions = reinterpret_cast<const SimulatedLibrary*>(library)->functions;
    const auto found = functions.find(name);
    return found == functions.end() ? nullptr : found->second;
}

std::string pathForLibrary(const std::u16string& path) {
    return utf8FromUtf16(path);
}

} // namespace rotika
