#include "platform/files.h"

#include "base/text.h"

#include "platform/simulated/files.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace rotika {

namespace {

namespace fs = std::filesystem;

std::optional<std::size_t> freeDiskBytes;

/// Converted through UTF-8: the path constructor for char16_t throws on a lone surrogate.
fs::path nativePath(const std::u16string& path) {
    const std::string bytes = utf8FromUtf16(path);
    return std::u8string(bytes.begin(), bytes.end());
}

fs::path resolveLinks(fs::path path) {
    constexpr int maxLinks = 40;
    std::error_code error;
    for (int i = 0; i < maxLinks && fs::is_symlink(path, error); ++i) {
        path = path.parent_path() / fs::read_symlink(path, error);
    }
    return path;
}

enum class WriteResult { whole, failed, cut };

WriteResult writeAll(const fs::path& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file) {
        return WriteResult::failed;
    }
    const std::size_t fits = freeDiskBytes ? std::min(*freeDiskBytes, bytes.size()) : bytes.size();
    if (freeDiskBytes) {
        *freeDiskBytes -= fits;
    }
    file.write(bytes.data(), static_cast<std::streamsize>(fits));
    file.close();
    return file.good() && fits == bytes.size() ? WriteResult::whole : WriteResult::cut;
}

} // namespace

std::optional<std::string> readFileBytes(const std::u16string& path) {
    const fs::path native = nativePath(path);
    std::error_code error;
    if (!fs::is_regular_file(native, error) || fs::file_size(native, error) > longestFileBytes) {
        return std::nullopt;
    }
    std::ifstream file(native, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

bool replaceFileBytes(const std::u16string& path, const std::string& bytes) {
    const fs::path target = resolveLinks(nativePath(path));
    std::error_code error;
    const fs::file_status old = fs::status(target, error);
    if (bytes.size() > longestFileBytes || (fs::exists(old) && !fs::is_regular_file(old))) {
        return false;
    }
    fs::path temporary = target;
    temporary += ".tmp";
    const WriteResult written = writeAll(temporary, bytes);
    if (written == WriteResult::failed) { // write in place; a full disk is not simulated for this
        return writeAll(target, bytes) == WriteResult::whole;
    }
    bool replaced = written == WriteResult::whole;
    if (replaced && fs::exists(old)) {
        fs::permissions(temporary, old.permissions(), error);
    }
    if (replaced) {
        fs::rename(temporary, target, error);
        replaced = !error;
    }
    if (!replaced) {
        fs::remove(temporary, error);
    }
    return replaced;
}

void removeFile(const std::u16string& path) {
    std::error_code ignored;
    fs::remove(nativePath(path), ignored);
}

bool pathExists(const std::u16string& path) {
    std::error_code error;
    return fs::exists(nativePath(path), error);
}

std::vector<std::u16string> foldersIn(const std::u16string& folder) {
    std::vector<std::u16string> names;
    std::error_code error;
    for (fs::directory_iterator entry(nativePath(folder), error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code unknown;
        if (entry->is_directory(unknown))
            names.push_back(entry->path().filename().u16string());
    }
    std::ranges::sort(names); // the order of real systems varies; tests need a fixed one
    return names;
}

void setSimulatedDiskSpace(std::optional<std::size_t> bytes) {
    freeDiskBytes = bytes;
}

} // namespace rotika
