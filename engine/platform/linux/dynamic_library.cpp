#include "platform/dynamic_library.h"

#include "core/text.h"

#include <dlfcn.h>
#include <sys/stat.h>

namespace {

bool isRegularFile(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

/// Text that no file name can hold would name another file after the conversion.
bool canBeFileName(const std::u16string& text, const std::string& converted) {
    return !text.empty() && text.find(u'\0') == std::u16string::npos && utf16FromUtf8(converted) == text;
}

} // namespace

// The loader has no search beside the library: it follows the RUNPATH that the library itself carries,
// LD_LIBRARY_PATH as it was when the program started, and the system's folders. Both kinds are the same here.
LibraryHandle loadLibrary(const std::u16string& pathOrName, LibrarySearch) {
    const std::string name = utf8FromUtf16(pathOrName);
    if (!canBeFileName(pathOrName, name)) {
        return nullptr; // an empty name would be this program itself
    }
    const bool isPath = name.find('/') != std::string::npos;
    if (isPath && !isRegularFile(name)) {
        return nullptr; // the loader would wait for ever at a pipe without a writer
    }
    return static_cast<LibraryHandle>(::dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL));
}

void* findLibraryFunction(LibraryHandle library, const char* name) {
    // Without a library the search would go through the whole program.
    return library == nullptr ? nullptr : ::dlsym(library, name);
}

std::u16string speechLibraryName() {
    return u"libvosk.so";
}

std::u16string gazeLibraryName() {
    return u"libtobii_stream_engine.so";
}

std::vector<std::u16string> gazeLibraryRoots() {
    return {u"/usr/lib/tobii", u"/opt/tobii"};
}
