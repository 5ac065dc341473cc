#include "platform/files.h"

#include "core/text.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string_view>
#include <utility>

namespace {

class Descriptor {
public:
    explicit Descriptor(int opened) : number(opened) {}
    Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor() { close(); }
    int get() const { return number; }
    explicit operator bool() const { return number >= 0; }

    /// False if the system tells now of a write that failed earlier.
    bool close() { return number < 0 || ::close(std::exchange(number, -1)) == 0; }

private:
    int number;
};

/// Removes the temporary file on every road that does not end in the rename.
class TemporaryFile {
public:
    explicit TemporaryFile(std::string name) : path(std::move(name)) {}
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (!path.empty()) {
            ::unlink(path.c_str());
        }
    }
    bool renameTo(const std::string& target) {
        if (::rename(path.c_str(), target.c_str()) != 0) {
            return false;
        }
        path.clear();
        return true;
    }

private:
    std::string path;
};

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string("./") : path.substr(0, slash + 1);
}

/// The text of a symbolic link, empty if `path` is none.
std::string linkText(const std::string& path) {
    char text[4096];
    const ssize_t length = ::readlink(path.c_str(), text, sizeof text);
    return length > 0 ? std::string(text, static_cast<std::size_t>(length)) : std::string();
}

/// Where the content lives: a rename over a link would replace the link and leave the user's file behind.
/// Empty for links that go round in a circle.
std::string resolveLinks(std::string path) {
    constexpr int mostLinks = 40; // the kernel's own limit
    for (int i = 0; i < mostLinks; ++i) {
        const std::string next = linkText(path);
        if (next.empty()) {
            return path;
        }
        path = next.front() == '/' ? next : folderOf(path) + next;
    }
    return {};
}

/// The name does not grow with the target's, which may already have the longest that is allowed.
std::string temporaryNameBeside(const std::string& target) {
    static std::atomic<unsigned> counter = 0;
    return folderOf(target) + ".rotika-" + std::to_string(::getpid()) + "-" + std::to_string(++counter) +
           ".tmp";
}

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}

/// The new file is to look like the old one. A change of owner is for the superuser alone, so it may fail; it
/// comes first because it clears bits of the mode.
bool copyPermissions(int descriptor, const struct stat& old) {
    struct stat fresh {};
    if (::fstat(descriptor, &fresh) != 0) {
        return false;
    }
    if (fresh.st_uid != old.st_uid || fresh.st_gid != old.st_gid) {
        [[maybe_unused]] const int ignored = ::fchown(descriptor, old.st_uid, old.st_gid);
    }
    return ::fchmod(descriptor, old.st_mode & 07777) == 0;
}

/// Makes the rename itself last. Some file systems cannot do that for a folder, and the content is safe
/// already.
void flushFolder(const std::string& folder) {
    const Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened) {
        ::fsync(opened.get());
    }
}

} // namespace

std::optional<std::string> readFileBytes(const std::u16string& path) {
    // A pipe without a writer would hold the open for ever.
    const Descriptor file(::open(utf8FromUtf16(path).c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    // The size is a first guess: the file may change meanwhile, and files under /proc say 0.
    std::string bytes(static_cast<std::size_t>(status.st_size) + 1, '\0');
    std::size_t length = 0;
    while (true) {
        const ssize_t got = ::read(file.get(), bytes.data() + length, bytes.size() - length);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            bytes.resize(length);
            return bytes;
        }
        length += static_cast<std::size_t>(got);
        if (length == bytes.size()) {
            bytes.resize(length * 2);
        }
    }
}

bool replaceFileBytes(const std::u16string& path, const std::string& bytes) {
    const std::string target = resolveLinks(utf8FromUtf16(path));
    if (target.empty()) {
        return false;
    }
    struct stat old {};
    const bool exists = ::stat(target.c_str(), &old) == 0;
    // The rename asks only the folder for leave; a file that the user locked is to stay as it is.
    if (exists && (!S_ISREG(old.st_mode) || ::access(target.c_str(), W_OK) != 0)) {
        return false;
    }
    const std::string name = temporaryNameBeside(target);
    Descriptor file(::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file) {
        return false;
    }
    TemporaryFile temporary(name);
    if ((exists && !copyPermissions(file.get(), old)) || !writeAll(file.get(), bytes) ||
        ::fsync(file.get()) != 0 || !file.close() || !temporary.renameTo(target)) {
        return false;
    }
    flushFolder(folderOf(target));
    return true;
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
