#include "platform/dynamic_library.h"

#include "base/text.h"
#include "common/windows/unlimited_path.h"

#include "platform/windows/windows_api.h"

namespace rotika {

namespace {

/// Takes the current folder out of every search for a library in this process and in those that it starts:
/// until the program sets it, it is whatever the starter chose, and an open file dialog makes it the user's,
/// such as the downloads. Runs before main, ahead of the first search. SetDefaultDllDirectories would not
/// affect the programs that functions open, but it excludes the PATH as well, where libraries of the
/// recogniser and the eye tracker and what these need may be.
[[maybe_unused]] const BOOL currentFolderIsExcluded = SetDllDirectoryW(L"");

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

/// As the system searches, but without the current folder even if a library has called SetDllDirectory too.
HMODULE loadByName(const std::wstring& name) {
    constexpr DWORD folders = LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32;
    if (const HMODULE loaded = LoadLibraryExW(name.c_str(), nullptr, folders))
        return loaded;
    std::wstring path(32767, L'\0'); // the longest value of a variable
    path.resize(GetEnvironmentVariableW(L"PATH", path.data(), static_cast<DWORD>(path.size())));
    std::wstring found(path.size() + name.size() + MAX_PATH, L'\0');
    found.resize(SearchPathW(path.c_str(), name.c_str(), L".dll", static_cast<DWORD>(found.size()),
                             found.data(), nullptr));
    return path.empty() || found.empty() ? nullptr : LoadLibraryW(found.c_str());
}

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
    if (pathOrName.find_first_of(u"\\/") == std::u16string::npos)
        return reinterpret_cast<LibraryHandle>(loadByName(wideText(pathOrName)));
    const std::wstring path = unlimitedPath(wideText(pathOrName));
    const DWORD flags = search == LibrarySearch::ownFolderFirst ? LOAD_WITH_ALTERED_SEARCH_PATH : 0;
    const HMODULE loaded = LoadLibraryExW(path.c_str(), nullptr, flags);
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
