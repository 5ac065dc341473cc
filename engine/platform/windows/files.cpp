#include "platform/files.h"

#include "platform/windows/handles.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <string_view>

namespace {

constexpr DWORD anySharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Virus scanners and indexers hold a fresh file for a moment.
constexpr int renameAttempts = 5;
constexpr DWORD renamePauseMs = 20;

/// Unlike any other writer's, in this process or another: two of them must not share one temporary file.
std::u16string temporaryPathFor(const std::u16string& path) {
    static std::atomic<std::uint32_t> serial{0};
    const std::string suffix =
        "." + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++serial) + ".tmp";
    return path + std::u16string(suffix.begin(), suffix.end());
}

bool writeAll(HANDLE file, const std::string& bytes) {
    std::size_t written = 0;
    while (written < bytes.size()) {
        constexpr std::size_t largestWrite = 1U << 24U;
        const auto count = static_cast<DWORD>(std::min(bytes.size() - written, largestWrite));
        DWORD done = 0;
        if (WriteFile(file, bytes.data() + written, count, &done, nullptr) == 0 || done == 0) {
            return false;
        }
        written += done;
    }
    return true;
}

bool writeTemporaryFile(const std::u16string& path, const std::string& bytes) {
    const KernelHandle file = fileHandle(CreateFileW(wideText(path), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                                     FILE_ATTRIBUTE_NORMAL, nullptr));
    return file && writeAll(file.get(), bytes) && FlushFileBuffers(file.get()) != 0;
}

bool renameOver(const std::u16string& from, const std::u16string& to) {
    for (int attempt = 1;; ++attempt) {
        if (MoveFileExW(wideText(from), wideText(to), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) !=
            0) {
            return true;
        }
        const DWORD error = GetLastError();
        const bool mayPass = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
        if (!mayPass || attempt == renameAttempts) {
            return false;
        }
        Sleep(renamePauseMs);
    }
}

void closeListing(HANDLE handle) {
    FindClose(handle);
}
using ListingHandle = UniqueHandle<HANDLE, closeListing>;

bool isFolderEntry(const WIN32_FIND_DATAW& entry) {
    const std::wstring_view name = entry.cFileName;
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 && name != L"." && name != L"..";
}

} // namespace

std::optional<std::string> readFileBytes(const std::u16string& path) {
    const KernelHandle file = fileHandle(CreateFileW(wideText(path), GENERIC_READ, anySharing, nullptr,
                                                     OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return std::nullopt;
    }
    std::string bytes;
    std::array<char, 16384> block{};
    DWORD count = 0;
    while (ReadFile(file.get(), block.data(), static_cast<DWORD>(block.size()), &count, nullptr) != 0 &&
           count > 0) {
        bytes.append(block.data(), count);
    }
    return bytes;
}

bool replaceFileBytes(const std::u16string& path, const std::string& bytes) {
    const std::u16string temporary = temporaryPathFor(path);
    if (writeTemporaryFile(temporary, bytes) && renameOver(temporary, path)) {
        return true;
    }
    DeleteFileW(wideText(temporary));
    return false;
}

bool pathExists(const std::u16string& path) {
    return GetFileAttributesW(wideText(path)) != INVALID_FILE_ATTRIBUTES;
}

std::vector<std::u16string> foldersIn(const std::u16string& folder) {
    std::vector<std::u16string> names;
    WIN32_FIND_DATAW entry{};
    const HANDLE opened = FindFirstFileW(wideText(folder + u"\\*"), &entry);
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
