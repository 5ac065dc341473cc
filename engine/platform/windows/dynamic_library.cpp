#include "platform/dynamic_library.h"

#include "base/text.h"
#include "common/windows/unlimited_path.h"

#include "platform/windows/windows_api.h"

namespace rotika {

namespace {

/// Suppresses the loader's error dialogs on this thread while it exists.
class ErrorDialogsOff {
public:
    ErrorDialogsOff() noexcept {
        SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &former);
    }
    ErrorDialogsOff(const ErrorDialogsOff&) = delete;
    ErrorDialogsOff& operator=(const ErrorDialogsOff&) = delete;
    ~ErrorDialogsOff() { SetThreadErrorMode(former, nullptr); }

private:
    DWORD former = 0;
};

/// Empty when the code page lacks one of the characters.
std::string inSystemCodePage(const std::wstring& path) {
    std::string bytes(4 * path.size(), '\0');
    BOOL hasUnmappable = FALSE;
    const int size =
        WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, path.data(), static_cast<int>(path.size()),
                            bytes.data(), static_cast<int>(bytes.size()), nullptr, &hasUnmappable);
    bytes.resize(hasUnmappable == 0 ? static_cast<std::size_t>(size) : 0);
    return bytes;
}

} // namespace

LibraryHandle loadLibrary(const std::u16string& pathOrName, LibrarySearch search) {
    if (pathOrName.find(u'\0') != std::u16string::npos) {
        return nullptr; // the system would load the name before the zero
    }
    const ErrorDialogsOff dialogsOff;
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

// The manifest makes the code page UTF-8. Windows before 1903 ignores it: there paths in the user's own
// language fit the code page, and others may have a short form.
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
