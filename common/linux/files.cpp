#include "common/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
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

    /// False if the system reports an earlier failed write now.
    bool close() { return number < 0 || ::close(std::exchange(number, -1)) == 0; }

private:
    int number;
};

/// Removes a new file on every failure.
class NewFile {
public:
    explicit NewFile(std::string name) : path(std::move(name)) {}
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile() {
        if (!path.empty()) {
            ::unlink(path.c_str());
        }
    }
    bool renameTo(const std::string& target) {
        if (::rename(path.c_str(), target.c_str()) != 0) {
            return false;
        }
        keep();
        return true;
    }
    void keep() { path.clear(); }

private:
    std::string path;
};

enum class Replacement {
    done,
    unavailable, // cannot be replaced by a rename, but a plain write may work
    failed,      // the disk is full or broken, so any other write would fail as well
};

Replacement unavailableUnlessFull(int error) {
    const bool isFull = error == ENOSPC || error == EDQUOT || error == EFBIG;
    return isFull ? Replacement::failed : Replacement::unavailable;
}

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

/// The file that holds the content: a rename over a link would replace the link and not the user's file.
/// Empty for a cycle of links.
std::string resolveLinks(std::string path) {
    constexpr int maxLinks = 40; // the kernel's own limit
    for (int i = 0; i < maxLinks; ++i) {
        const std::string next = linkText(path);
        if (next.empty()) {
            return path;
        }
        path = next.front() == '/' ? next : folderOf(path) + next;
    }
    return {};
}

/// Independent of the target's name, which may already have the maximum length.
std::string temporaryNameBeside(const std::string& target) {
    static std::atomic<unsigned> counter = 0;
    return folderOf(target) + ".rotika-" + std::to_string(::getpid()) + "-" + std::to_string(++counter) +
           ".tmp";
}

/// Writes from the beginning of the file and flushes to disk. Truncates last, so that the old content keeps
/// its disk space until then.
bool writeOver(const Descriptor& file, std::string_view bytes) {
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count =
            ::pwrite(file.get(), bytes.data() + written, bytes.size() - written, static_cast<off_t>(written));
        if (count > 0) {
            written += static_cast<std::size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            return false;
        }
    }
    return ::ftruncate(file.get(), static_cast<off_t>(bytes.size())) == 0 && ::fsync(file.get()) == 0;
}

/// Copies owner, group and mode. Only the superuser may change the owner, so a failure is ignored; it comes
/// first because it clears bits of the mode.
bool copyPermissions(const Descriptor& file, const struct stat& old) {
    struct stat fresh {};
    if (::fstat(file.get(), &fresh) != 0) {
        return false;
    }
    if (fresh.st_uid != old.st_uid || fresh.st_gid != old.st_gid) {
        [[maybe_unused]] const int ignored = ::fchown(file.get(), old.st_uid, old.st_gid);
    }
    return ::fchmod(file.get(), old.st_mode & 07777) == 0;
}

/// Makes a new name durable. Best effort: some file systems cannot flush a folder, and the content is safe.
void flushFolderOf(const std::string& path) {
    const Descriptor opened(::open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened) {
        ::fsync(opened.get());
    }
}

Descriptor openNew(const std::string& path) {
    return Descriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
}

/// `old` is null if there is no such file yet.
Replacement replaceByRename(const std::string& target, const struct stat* old, std::string_view bytes) {
    const std::string name = temporaryNameBeside(target);
    Descriptor file = openNew(name);
    if (!file) {
        return unavailableUnlessFull(errno);
    }
    NewFile temporary(name);
    if (old != nullptr && !copyPermissions(file, *old)) {
        return Replacement::unavailable;
    }
    if (!writeOver(file, bytes) || !file.close()) {
        return Replacement::failed;
    }
    if (!temporary.renameTo(target)) {
        return unavailableUnlessFull(errno);
    }
    flushFolderOf(target);
    return Replacement::done;
}

bool writeInPlace(const std::string& target, std::string_view bytes) {
    const std::optional<std::string> old = readWholeFile(target);
    const Descriptor file(old ? ::open(target.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC) : -1);
    if (!file) {
        return false;
    }
    if (writeOver(file, bytes)) {
        return true;
    }
    writeOver(file, *old);
    return false;
}

bool writeNew(const std::string& target, std::string_view bytes) {
    const Descriptor file = openNew(target);
    if (!file) {
        return false;
    }
    NewFile made(target);
    if (!writeOver(file, bytes)) {
        return false;
    }
    made.keep();
    flushFolderOf(target);
    return true;
}

} // namespace

std::optional<std::string> readWholeFile(const std::filesystem::path& path) {
    // Opening a pipe without a writer would block.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > static_cast<off_t>(longestFileBytes)) {
        return std::nullopt;
    }
    // The size is a first guess: the file may change meanwhile, and files under /proc report 0.
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
        if (length > longestFileBytes) {
            return std::nullopt;
        }
        if (length == bytes.size()) {
            bytes.resize(std::min(length * 2, longestFileBytes + 1));
        }
    }
}

bool replaceWholeFile(const std::filesystem::path& path, std::string_view bytes) {
    const std::string target = resolveLinks(path.native());
    if (target.empty() || bytes.size() > longestFileBytes) {
        return false;
    }
    struct stat old {};
    const bool exists = ::stat(target.c_str(), &old) == 0;
    // A rename needs rights to the folder only; a read-only file must stay unchanged.
    if (exists && (!S_ISREG(old.st_mode) || ::access(target.c_str(), W_OK) != 0)) {
        return false;
    }
    const Replacement outcome = replaceByRename(target, exists ? &old : nullptr, bytes);
    if (outcome != Replacement::unavailable) {
        return outcome == Replacement::done;
    }
    return exists ? writeInPlace(target, bytes) : writeNew(target, bytes);
}
