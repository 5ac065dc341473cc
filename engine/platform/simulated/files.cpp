#include "platform/files.h"

#include "base/text.h"

#include "platform/simulated/simulated_files.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace rotika {

namespace {

namespace fs = std::filesystem;

std::optional<std::size_t> diskRoom;

/// By way of UTF-8, which every path takes: a path made of char16_t directly throws on a lone surrogate.
fs::path nativePath(const std::u16string& path) {
    const std::string bytes = utf8FromUtf16(path);
    return std::u8string(bytes.begin(), bytes.end());
}

fs::path resolveLinks(fs::path path) {
    constexpr int mostLinks = 40;
    std::error_code error;
    for (int i = 0; i < mostLinks && fs::is_symlink(path, error); ++i) {
        path = path.parent_path() / fs::read_symlink(path, error);
    }
    return path;
}

enum class Written { whole, notAtAll, cut };

Written writeAll(const fs::path& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file) {
        return Written::notAtAll;
    }
    const std::size_t fits = diskRoom ? std::min(*diskRoom, bytes.size()) : bytes.size();
    if (diskRoom) {
        *diskRoom -= fits;
    }
    file.write(bytes.data(), static_cast<std::streamsize>(fits));
    file.close();
    return file.good() && fits == bytes.size() ? Written::whole : Written::cut;
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
    const Written written = writeAll(temporary, bytes);
    if (written == Written::notAtAll) { // in place, where a full disk is not simulated
        return writeAll(target, bytes) == Written::whole;
    }
    bool replaced = written == Written::whole;
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
    std::ranges::sort(names); // any order is a system's own; this one is the same in every run
    return names;
}

void setSimulatedDiskRoom(std::optional<std::size_t> bytes) {
    diskRoom = bytes;
}

} // namespace rotika
