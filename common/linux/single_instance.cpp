#include "common/single_instance.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

namespace {

constexpr int noFile = -1;

/// A descriptor of a regular file owned by this user, or noFile. Close-on-exec, so that a program started
/// from a wheel does not keep the lock after this process has ended.
int openLockFile(const std::string& path) {
    const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600);
    if (file == noFile)
        return noFile;
    struct stat status {};
    if (fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid())
        return file;
    // Another user's file in a shared folder: its lock must not block this user.
    close(file);
    return noFile;
}

int openInRuntimeFolder() {
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    if (folder == nullptr || folder[0] != '/')
        return noFile;
    return openLockFile(std::string(folder) + '/' + singleInstanceName + ".lock");
}

int openInTemporaryFolder() {
    const char* folder = std::getenv("TMPDIR");
    const std::string base = folder != nullptr && folder[0] == '/' ? folder : "/tmp";
    return openLockFile(base + '/' + singleInstanceName + '-' + std::to_string(geteuid()) + ".lock");
}

} // namespace

bool claimSingleInstance() {
    int file = openInRuntimeFolder();
    if (file == noFile)
        file = openInTemporaryFolder();
    if (file == noFile)
        return true;
    return flock(file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}
