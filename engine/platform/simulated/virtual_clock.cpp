#include "platform/simulated/virtual_clock.h"

#include "platform/simulated/broken_contract.h"

#include <algorithm>
#include <chrono>

namespace rotika {

namespace {
// Far longer than a turn takes even with a sanitizer: only a worker that hangs exceeds it.
constexpr std::chrono::seconds turnLimit{120};
} // namespace

thread_local VirtualClock::Worker* VirtualClock::callingWorker = nullptr;

bool VirtualClock::callerIsWorker() {
    return callingWorker != nullptr;
}

void VirtualClock::startWorker(std::function<void()> body) {
    const std::lock_guard lock(guard);
    Worker& worker = *workers.emplace_back(std::make_unique<Worker>());
    worker.wakesAt = nowMs;
    worker.hasTurn = isFree;
    worker.thread = std::thread(
        [this, &worker, moved = std::move(body)]() mutable { runWorker(worker, std::move(moved)); });
}

void VirtualClock::runWorker(Worker& worker, std::function<void()> body) {
    callingWorker = &worker;
    {
        std::unique_lock lock(guard);
        worker.turnStarted.wait(lock, [&worker] { return worker.hasTurn; });
    }
    body();
    body = nullptr; // frees what the body owns within its last turn
    const std::lock_guard lock(guard);
    worker.hasTurn = false;
    worker.hasEnded = true;
    turnEnded.notify_all();
}

void VirtualClock::sleepCallingWorker(std::uint32_t durationMs) {
    if (callingWorker == nullptr)
        breakContract("the owner thread called sleepMs");
    if (isFree) {
        std::this_thread::yield();
        return;
    }
    if (durationMs == 0)
        return;
    std::unique_lock lock(guard);
    Worker& worker = *callingWorker;
    worker.wakesAt = nowMs + durationMs;
    worker.hasTurn = false;
    turnEnded.notify_all();
    worker.turnStarted.wait(lock, [&worker] { return worker.hasTurn; });
}

std::optional<std::uint64_t> VirtualClock::nextWake() const {
    if (isFree)
        return std::nullopt;
    const std::lock_guard lock(guard);
    std::optional<std::uint64_t> earliest;
    for (const auto& worker : workers)
        if (!worker->hasEnded && (!earliest || worker->wakesAt < *earliest))
            earliest = worker->wakesAt;
    return earliest;
}

bool VirtualClock::runDueWorker() {
    if (isFree)
        return false;
    std::unique_lock lock(guard);
    Worker* next = nullptr;
    for (const auto& worker : workers) {
        const bool isDue = !worker->hasEnded && worker->wakesAt <= nowMs;
        if (isDue && (next == nullptr || worker->wakesAt < next->wakesAt))
            next = worker.get();
    }
    if (next == nullptr)
        return false;
    next->hasTurn = true;
    next->turnStarted.notify_all();
    if (!turnEnded.wait_for(lock, turnLimit, [next] { return !next->hasTurn; }))
        breakContract("a worker neither slept nor ended");
    lock.unlock();
    removeEndedWorkers();
    return true;
}

void VirtualClock::removeEndedWorkers() {
    workers.remove_if([this](const std::unique_ptr<Worker>& worker) {
        {
            const std::lock_guard lock(guard);
            if (!worker->hasEnded)
                return false;
        }
        worker->thread.join();
        return true;
    });
}

void VirtualClock::drain() {
    if (isFree) {
        for (const auto& worker : workers)
            worker->thread.join();
        workers.clear();
        return;
    }
    while (const auto wake = nextWake()) {
        nowMs = std::max(now(), *wake);
        runDueWorker();
    }
}

void VirtualClock::runWorkersUntil(const std::function<bool()>& condition, std::uint32_t limitMs) {
    if (isFree) {
        while (!condition())
            std::this_thread::yield();
        return;
    }
    const std::uint64_t deadline = now() + limitMs;
    while (!condition()) {
        const std::optional<std::uint64_t> wake = nextWake();
        if (!wake || *wake > deadline) {
            nowMs = deadline;
            return;
        }
        nowMs = std::max(now(), *wake);
        runDueWorker();
    }
}

} // namespace rotika
