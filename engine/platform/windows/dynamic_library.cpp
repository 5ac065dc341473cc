#include "platform/dynamic_library.h"

#include "platform/windows/windows_api.h"

namespace {

/// While it lives, the loader says nothing to the user: neither of a missing file nor of a broken one.
class QuietLoading {
public:
    QuietLoading() noexcept { SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &former); }
    QuietLoading(const QuietLoading&) = delete;
    QuietLoading& operator=(const QuietLoading&) = delete;
    ~QuietLoading() { SetThreadErrorMode(former, nullptr); }

private:
    DWORD former = 0;
};

} // namespace

LibraryHandle loadLibrary(const std::u16string& pathOrName, LibrarySearch search) {
    if (pathOrName.find(u'\0') != std::u16string::npos) {
        return nullptr; // the system would load what the part before it names
    }
    const QuietLoading quiet;
    const HMODULE loaded = search == LibrarySearch::besideItself
                               ? LoadLibraryExW(wideText(pathOrName), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH)
                               : LoadLibraryW(wideText(pathOrName));
    return reinterpret_cast<LibraryHandle>(loaded);
}

void* findLibraryFunction(LibraryHandle library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(reinterpret_cast<HMODULE>(library), name));
}

std::u16string speechLibraryName() {
    return u"libvosk.dll";
}

std::u16string gazeLibraryName() {
    return u"tobii_stream_engine.dll";
}

std::vector<std::u16string> gazeLibraryRoots() {
    return {
        u"C:\\Program Files\\Tobii",
        u"C:\\Program Files (x86)\\Tobii",
        u"C:\\Program Files\\Tobii Experience",
        u"C:\\Program Files (x86)\\Tobii Experience",
        u"C:\\ProgramData\\Tobii",
    };
}
