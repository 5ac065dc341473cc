#include "platform/linux/input_guard.h"

#include "common/data_folder.h"

#include "platform/linux/owner_loop.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <set>
#include <string>
#include <utility>

namespace rotika {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// A guard that dies at once each time, for instance out of memory, must not be restarted in a tight loop.
constexpr milliseconds minLifetime{10'000};
constexpr milliseconds minPause{1000};
constexpr milliseconds maxPause{60'000};

struct Guard {
    std::mutex mutex;
    int socket = -1;                                       // guarded by mutex
    std::set<std::pair<GuardedThing, std::uint32_t>> down; // guarded by mutex; sent to a new guard
    Clock::time_point startedAt;                           // owner thread
    milliseconds pause{0};                                 // owner thread; before the next start
};

// Never destroyed: run threads use it until the process ends.
Guard& guard() {
    static Guard* const instance = new Guard;
    return *instance;
}

/// The guard must outlive this process, its terminal and its session, and must not keep inherited pipes open.
/// 0 when it cannot be started.
pid_t spawnGuard(const std::string& path, int guardSocket) {
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t actions;
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    posix_spawn_file_actions_adddup2(&actions, guardSocket, STDIN_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::string name = path;
    char* arguments[] = {name.data(), nullptr};
    pid_t child = 0;
    const int failure = posix_spawn(&child, path.c_str(), &actions, &attributes, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    return failure == 0 ? child : 0;
}

/// The guard's mutex is held.
void sendRecord(GuardedThing kind, bool down, std::uint32_t code) {
    if (guard().socket < 0)
        return;
    GuardRecord record;
    record.kind = kind;
    record.down = down ? 1 : 0;
    record.code = code;
    send(guard().socket, &record, sizeof record, MSG_NOSIGNAL | MSG_DONTWAIT);
}

void replaceSocket(int socket) {
    const std::lock_guard lock(guard().mutex);
    if (guard().socket >= 0)
        close(guard().socket);
    guard().socket = socket;
    for (const auto& [kind, code] : guard().down)
        sendRecord(kind, true, code);
}

void launchGuard();

gboolean launchAgain(gpointer) {
    launchGuard();
    return G_SOURCE_REMOVE;
}

void launchAfterPause() {
    Guard& dead = guard();
    callOwnerAfter(static_cast<guint>(dead.pause.count()), launchAgain, nullptr);
    const bool diedEarly = Clock::now() - dead.startedAt < minLifetime;
    dead.pause = diedEarly ? std::clamp(dead.pause * 2, minPause, maxPause) : milliseconds(0);
}

void onGuardDeath(GPid child, gint /*status*/, gpointer) {
    g_spawn_close_pid(child);
    launchAfterPause();
}

/// 0 when it could not be started.
pid_t startGuardProcess() {
    int ends[2] = {-1, -1};
    guard().startedAt = Clock::now();
    // A stream: a packet socket may queue as few as ten unread packets.
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        return 0;
    // The records are in the socket before the guard starts: this process may be killed at any moment.
    replaceSocket(ends[0]);
    const pid_t child = spawnGuard(executableFolder() / "rotika-guard", ends[1]);
    close(ends[1]);
    if (child == 0)
        replaceSocket(-1);
    return child;
}

void launchGuard() {
    const pid_t child = startGuardProcess();
    if (child == 0) {
        launchAfterPause();
        return;
    }
    GSource* watch = g_child_watch_source_new(child);
    g_source_set_callback(watch, G_SOURCE_FUNC(onGuardDeath), nullptr, nullptr);
    g_source_attach(watch, ownerContext());
    g_source_unref(watch);
}

} // namespace

void startInputGuard() {
    if (guard().startedAt == Clock::time_point())
        launchGuard();
}

void notifyInputGuard(GuardedThing kind, bool down, std::uint32_t code) {
    const std::lock_guard lock(guard().mutex);
    if (kind != GuardedThing::heartbeat) {
        if (down)
            guard().down.insert({kind, code});
        else
            guard().down.erase({kind, code});
    }
    sendRecord(kind, down, code);
}

} // namespace rotika
