#include "platform/files.h"

#include "base/text.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <string_view>

namespace rotika {

std::optional<std::string> readFileBytes(const std::u16string& path) {
    return readWholeFile(utf8FromUtf16(path));
}

bool replaceFileBytes(const std::u16string& path, const std::string& bytes) {
    return replaceWholeFile(utf8FromUtf16(path), bytes);
}

void removeFile(const std::u16string& path) {
    ::unlink(utf8FromUtf16(path).c_str());
}

bool pathExists(const std::u16string& path) {
    struct stat status {};
    return ::stat(utf8FromUtf16(path).c_str(), &status) == 0;
}

std::vector<std::u16string> foldersIn(const std::u16string& folder) {
    struct FolderCloser {
        void operator()(DIR* opened) const noexcept { ::closedir(opened); }
    };
    const std::unique_ptr<DIR, FolderCloser> opened(::opendir(utf8FromUtf16(folder).c_str()));
    std::vector<std::u16string> names;
    while (const dirent* const entry = opened ? ::readdir(opened.get()) : nullptr) {
        const std::string_view name = entry->d_name;
        struct stat status {};
        if (name != "." && name != ".." && ::fstatat(::dirfd(opened.get()), entry->d_name, &status, 0) == 0 &&
            S_ISDIR(status.st_mode)) {
            names.push_back(utf16FromUtf8(name));
        }
    }
    return names;
}

} // namespace rotika
