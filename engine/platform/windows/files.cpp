#include "platform/files.h"

#include "common/windows/unlimited_path.h"

#include "platform/windows/handles.h"

#include <string_view>

namespace rotika {

namespace {

void closeListing(HANDLE handle) {
    FindClose(handle);
}
using ListingHandle = UniqueHandle<HANDLE, closeListing>;

std::wstring nativePath(const std::u16string& path) {
    return unlimitedPath(wideText(path));
}

bool isFolderEntry(const WIN32_FIND_DATAW& entry) {
    const std::wstring_view name = entry.cFileName;
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 && name != L"." && name != L"..";
}

} // namespace

std::optional<std::string> readFileBytes(const std::u16string& path) {
    return readWholeFile(wideText(path));
}

bool replaceFileBytes(const std::u16string& path, const std::string& bytes) {
    return replaceWholeFile(wideText(path), bytes);
}

void removeFile(const std::u16string& path) {
    DeleteFileW(nativePath(path).c_str());
}

bool pathExists(const std::u16string& path) {
    return GetFileAttributesW(nativePath(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::vector<std::u16string> foldersIn(const std::u16string& folder) {
    std::vector<std::u16string> names;
    WIN32_FIND_DATAW entry{};
    const HANDLE opened = FindFirstFileW((nativePath(folder) + L"\\*").c_str(), &entry);
    if (opened == INVALID_HANDLE_VALUE) {
        return names;
    }
    const ListingHandle listing(opened);
    do {
        if (isFolderEntry(entry)) {
            names.emplace_back(reinterpret_cast<const char16_t*>(entry.cFileName));
        }
    } while (FindNextFileW(listing.get(), &entry) != 0);
    return names;
}

} // namespace rotika
