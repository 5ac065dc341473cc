#include "platform/dynamic_library.h"

#include "base/text.h"
#include "common/windows/unlimited_path.h"

#include "platform/windows/windows_api.h"

namespace rotika {

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

/// Empty when the code page lacks one of the characters.
std::string inSystemCodePage(const std::wstring& path) {
    std::string bytes(4 * path.size(), '\0');
    BOOL lacksOne = FALSE;
    const int size =
        WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, path.data(), static_cast<int>(path.size()),
                            bytes.data(), static_cast<int>(bytes.size()), nullptr, &lacksOne);
    bytes.resize(lacksOne == 0 ? static_cast<std::size_t>(size) : 0);
    return bytes;
}

} // namespace

LibraryHandle loadLibrary(const std::u16string& pathOrName, LibrarySearch search) {
    if (pathOrName.find(u'\0') != std::u16string::npos) {
        return nullptr; // the system would load what the part before it names
    }
    const QuietLoading quiet;
    const bool isPath = pathOrName.find(u'\\') != std::u16string::npos;
    const std::wstring name = isPath ? unlimitedPath(wideText(pathOrName)) : wideText(pathOrName);
    const HMODULE loaded = search == LibrarySearch::ownFolderFirst
                               ? LoadLibraryExW(name.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH)
                               : LoadLibraryW(name.c_str());
    return reinterpret_cast<LibraryHandle>(loaded);
}

void* findLibraryFunction(LibraryHandle library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(reinterpret_cast<HMODULE>(library), name));
}

// Our manifest makes the code page UTF-8. Windows before 1903 does not heed it: there the paths of the user's
// own language still fit the code page, and others may have a short form.
std::string pathForLibrary(const std::u16string& path) {
    if (GetACP() != CP_UTF8) {
        for (const std::wstring& form : {std::wstring(wideText(path)), shortPath(wideText(path))}) {
            if (std::string bytes = inSystemCodePage(form); !bytes.empty()) {
                return bytes;
            }
        }
    }
    return utf8FromUtf16(path);
}

} // namespace rotika
