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

// Virus scanners and indexers hold a new file open for a moment.
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
    unavailable, // cannot be replaced by a rename, but a plain write may work
    failed,      // the disk is full or broken, so any other write would fail as well
};

Replacement unavailableUnlessFull(DWORD error) {
    const bool isFull = error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL ||
                        error == quotaExceeded || error == ERROR_FILE_TOO_LARGE;
    return isFull ? Replacement::failed : Replacement::unavailable;
}

/// Unique among all writers, in this process or another.
std::wstring temporaryPathFor(const std::wstring& path) {
    static std::atomic<std::uint32_t> serial{0};
    return path + L"." + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++serial) + L".tmp";
}

/// Writes from the beginning of the file and flushes to disk. Truncates last, so that the old content keeps
/// its disk space until then.
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

/// Empty optional for a pipe, a device or content that is too long.
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
        const bool isTemporary = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
        if (!isTemporary || attempt == renameAttempts) {
            return unavailableUnlessFull(error);
        }
        Sleep(renamePauseMs);
    }
}

Replacement replaceByRename(const std::wstring& path, std::string_view bytes) {
    const std::wstring temporary = temporaryPathFor(path);
    FileHandle file = openFile(temporary, GENERIC_WRITE, 0, CREATE_ALWAYS);
    if (!file) {
        return unavailableUnlessFull(GetLastError());
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
    // Checked here, since not every system's rename refuses: a read-only file must stay unchanged.
    const bool isLocked = exists && (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY)) != 0;
    if (isLocked || bytes.size() > longestFileBytes) {
        return false;
    }
    const Replacement outcome = replaceByRename(target, bytes);
    if (outcome != Replacement::unavailable) {
        return outcome == Replacement::done;
    }
    return exists ? writeInPlace(target, bytes) : writeNew(target, bytes);
}
