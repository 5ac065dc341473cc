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

/// Time that only the owner thread advances, and the threads that sleep on it. Exactly one thread runs at any
/// time: the owner or one worker, so the order of events is the same in each run. Due workers run in order of
/// wake time, then of start.
class VirtualClock {
public:
    VirtualClock() = default;
    ~VirtualClock() { drain(); }
    VirtualClock(const VirtualClock&) = delete;
    VirtualClock& operator=(const VirtualClock&) = delete;

    /// Milliseconds since the clock was created. Any thread.
    std::uint64_t now() const { return nowMs.load(); }

    /// Starts a worker; it first runs in the next runDueWorker(). Any thread.
    void startWorker(std::function<void()> body);

    /// Blocks the calling worker for that time. 0 returns at once.
    void sleepCallingWorker(std::uint32_t durationMs);

    static bool callerIsWorker();

    /// When the next sleeping worker wakes; nullopt when none sleeps. Owner thread, like all below.
    std::optional<std::uint64_t> nextWake() const;

    /// Advances time without running anything.
    void setNow(std::uint64_t tick) { nowMs = tick; }

    /// Runs one due worker until it sleeps again or ends. False when none is due.
    bool runDueWorker();

    /// Advances time for workers only, as while the owner is blocked: until `condition` holds, or for
    /// `limitMs`.
    void runWorkersUntil(const std::function<bool()>& condition, std::uint32_t limitMs);

    /// From now on workers start at once, run concurrently and never wait: for tests that look for data
    /// races.
    void runWorkersFreely() { isFree = true; }

    /// Runs every worker to its end, however long it sleeps, and joins the threads.
    void drain();

private:
    struct Worker {
        std::thread thread;
        std::condition_variable turnStarted;
        std::uint64_t wakesAt = 0;
        bool hasTurn = false;
        bool hasEnded = false;
    };

    void runWorker(Worker& worker, std::function<void()> body);
    void removeEndedWorkers();

    static thread_local Worker* callingWorker;

    std::atomic<std::uint64_t> nowMs = 0;
    std::atomic<bool> isFree = false;
    mutable std::mutex guard;
    std::condition_variable turnEnded;
    std::list<std::unique_ptr<Worker>> workers; // in order of start
};

} // namespace rotika
