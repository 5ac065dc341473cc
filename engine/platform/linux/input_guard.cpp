#include "platform/linux/input_guard.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace {

int guardSocket = -1; // written once, before any run thread exists

std::string guardPath() {
    std::error_code failure;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", failure);
    return failure ? std::string() : (program.parent_path() / "rotika-guard").string();
}

/// The guard must outlive us, our terminal and our session, and must not keep anybody's pipes open.
bool spawnGuard(const std::string& path, int itsSocket) {
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t actions;
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    posix_spawn_file_actions_adddup2(&actions, itsSocket, STDIN_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::string name = path;
    char* arguments[] = {name.data(), nullptr};
    pid_t child = 0;
    const int failure = posix_spawn(&child, path.c_str(), &actions, &attributes, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    return failure == 0;
}

} // namespace

void startInputGuard() {
    int ends[2] = {-1, -1};
    if (guardSocket >= 0 || socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        return;
    if (spawnGuard(guardPath(), ends[1]))
        guardSocket = ends[0];
    else
        close(ends[0]);
    close(ends[1]);
}

void tellInputGuard(GuardedThing kind, bool down, std::uint32_t code) {
    if (guardSocket < 0)
        return;
    GuardRecord record;
    record.kind = kind;
    record.down = down ? 1 : 0;
    record.code = code;
    send(guardSocket, &record, sizeof record, MSG_NOSIGNAL | MSG_DONTWAIT);
}
