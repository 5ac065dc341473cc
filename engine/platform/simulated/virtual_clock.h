#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace rotika {

/// Time that moves only when the owner thread says so, and the threads that sleep on it. Exactly one thread
/// runs at any moment: the owner, or the one worker whose turn it is, so that every order of events is exact
/// and the same in each run. Due workers take their turns by wake time, then by the order in which they were
/// started.
class VirtualClock {
public:
    VirtualClock() = default;
    ~VirtualClock() { drain(); }
    VirtualClock(const VirtualClock&) = delete;
    VirtualClock& operator=(const VirtualClock&) = delete;

    /// Milliseconds since the clock was made. Any thread.
    std::uint64_t now() const { return nowMs.load(); }

    /// Starts a worker; its first turn comes with the next runDueWorker. Any thread.
    void startWorker(std::function<void()> body);

    /// Blocks the calling worker until its time has come. 0 returns at once.
    void sleepCallingWorker(std::uint32_t durationMs);

    static bool callerIsWorker();

    /// When the next sleeping worker wakes; empty when none sleeps. Owner thread, like all below.
    std::optional<std::uint64_t> nextWake() const;

    /// Moves time forward without a turn for anybody.
    void setNow(std::uint64_t tick) { nowMs = tick; }

    /// Gives one worker that is due its turn and waits until it blocks again or ends. False when none is due.
    bool runDueWorker();

    /// Lets time pass for the workers alone, while the owner is blocked: until `condition` holds, or for
    /// `limitMs`.
    void playWorkersUntil(const std::function<bool()>& condition, std::uint32_t limitMs);

    /// From now on workers start at once, run side by side and never wait: for tests that hunt data races.
    void runWorkersFreely() { isFree = true; }

    /// Plays every worker to its end, however long it sleeps, and joins the threads.
    void drain();

    std::size_t workerCount() const { return workers.size(); }

private:
    struct Worker {
        std::thread thread;
        std::condition_variable turnCame;
        std::uint64_t wakesAt = 0;
        bool hasTurn = false;
        bool hasEnded = false;
    };

    void playWorker(Worker& worker, std::function<void()> body);
    void forgetEndedWorkers();

    static thread_local Worker* callingWorker;

    std::atomic<std::uint64_t> nowMs = 0;
    std::atomic<bool> isFree = false;
    mutable std::mutex guard;
    std::condition_variable turnEnded;
    std::list<std::unique_ptr<Worker>> workers; // in order of start
};

} // namespace rotika
