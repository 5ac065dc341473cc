#include "platform/dynamic_library.h"

#include "base/text.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

// Only workers load libraries, one at a time, so the owner thread may look at the desktop between their
// turns.

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
