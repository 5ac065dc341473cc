#include "common/files.h"

#include "common/windows/unlimited_path.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

namespace {

constexpr DWORD anySharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Virus scanners and indexers hold a fresh file for a moment.
constexpr int renameAttempts = 5;
constexpr DWORD renamePauseMs = 20;

constexpr DWORD quotaExceeded = 1295; // ERROR_DISK_QUOTA_EXCEEDED, which mingw's headers lack

struct HandleCloser {
    void operator()(void* handle) const noexcept { CloseHandle(handle); }
};
using FileHandle = std::unique_ptr<void, HandleCloser>;

FileHandle openFile(const std::wstring& path, DWORD access, DWORD sharing, DWORD disposition) {
    const HANDLE opened =
        CreateFileW(path.c_str(), access, sharing, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    return FileHandle(opened == INVALID_HANDLE_VALUE ? nullptr : opened);
}

enum class Replacement {
    done,
    closed, // this road is closed, a plain write may still work
    failed, // the disk is full or broken, and any other write would fail as well
};

Replacement closedUnlessFull(DWORD error) {
    const bool isFull = error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL ||
                        error == quotaExceeded || error == ERROR_FILE_TOO_LARGE;
    return isFull ? Replacement::failed : Replacement::closed;
}

/// Unlike any other writer's, in this process or another: two of them must not share one temporary file.
std::wstring temporaryPathFor(const std::wstring& path) {
    static std::atomic<std::uint32_t> serial{0};
    return path + L"." + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++serial) + L".tmp";
}

/// From the beginning of the file and down to the disk. What is too much is cut off last, so that until then
/// all that the file held has its room on the disk.
bool writeOver(const FileHandle& file, std::string_view bytes) {
    if (SetFilePointerEx(file.get(), {}, nullptr, FILE_BEGIN) == 0) {
        return false;
    }
    while (!bytes.empty()) {
        DWORD done = 0;
        if (WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr) == 0 ||
            done == 0) {
            return false;
        }
        bytes.remove_prefix(done);
    }
    return SetEndOfFile(file.get()) != 0 && FlushFileBuffers(file.get()) != 0;
}

/// Empty optional for a pipe or a device, and for what is too long.
std::optional<std::string> contentOf(const FileHandle& file) {
    LARGE_INTEGER size{};
    if (!file || GetFileType(file.get()) != FILE_TYPE_DISK || GetFileSizeEx(file.get(), &size) == 0 ||
        size.QuadPart > static_cast<LONGLONG>(longestFileBytes)) {
        return std::nullopt;
    }
    std::string bytes;
    std::array<char, 16384> block{};
    DWORD count = 0;
    while (ReadFile(file.get(), block.data(), static_cast<DWORD>(block.size()), &count, nullptr) != 0 &&
           count > 0) {
        bytes.append(block.data(), count);
        if (bytes.size() > longestFileBytes) {
            return std::nullopt;
        }
    }
    return bytes;
}

Replacement renameOver(const std::wstring& from, const std::wstring& to) {
    for (int attempt = 1;; ++attempt) {
        if (MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0) {
            return Replacement::done;
        }
        const DWORD error = GetLastError();
        const bool mayPass = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
        if (!mayPass || attempt == renameAttempts) {
            return closedUnlessFull(error);
        }
        Sleep(renamePauseMs);
    }
}

Replacement replaceByRename(const std::wstring& path, std::string_view bytes) {
    const std::wstring temporary = temporaryPathFor(path);
    FileHandle file = openFile(temporary, GENERIC_WRITE, 0, CREATE_ALWAYS);
    if (!file) {
        return closedUnlessFull(GetLastError());
    }
    const bool isWritten = writeOver(file, bytes);
    file.reset();
    const Replacement outcome = isWritten ? renameOver(temporary, path) : Replacement::failed;
    if (outcome != Replacement::done) {
        DeleteFileW(temporary.c_str());
    }
    return outcome;
}

bool writeInPlace(const std::wstring& path, std::string_view bytes) {
    const FileHandle file = openFile(path, GENERIC_READ | GENERIC_WRITE, anySharing, OPEN_EXISTING);
    const std::optional<std::string> old = contentOf(file);
    if (!old) {
        return false;
    }
    if (writeOver(file, bytes)) {
        return true;
    }
    writeOver(file, *old);
    return false;
}

bool writeNew(const std::wstring& path, std::string_view bytes) {
    FileHandle file = openFile(path, GENERIC_WRITE, 0, CREATE_NEW);
    if (!file) {
        return false;
    }
    if (writeOver(file, bytes)) {
        return true;
    }
    file.reset();
    DeleteFileW(path.c_str());
    return false;
}

} // namespace

std::optional<std::string> readWholeFile(const std::filesystem::path& path) {
    return contentOf(openFile(unlimitedPath(path.native()), GENERIC_READ, anySharing, OPEN_EXISTING));
}

bool replaceWholeFile(const std::filesystem::path& path, std::string_view bytes) {
    const std::wstring target = unlimitedPath(path.native());
    const DWORD attributes = GetFileAttributesW(target.c_str());
    const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
    // Not left to the rename: a file that the user locked is to stay as it is, everywhere.
    const bool isLocked = exists && (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY)) != 0;
    if (isLocked || bytes.size() > longestFileBytes) {
        return false;
    }
    const Replacement outcome = replaceByRename(target, bytes);
    if (outcome != Replacement::closed) {
        return outcome == Replacement::done;
    }
    return exists ? writeInPlace(target, bytes) : writeNew(target, bytes);
}
