#pragma once

#include <atomic>

namespace rotika {

/// A setting or flag that other threads may read while the owner thread writes it. Readers need no ordering
/// between several values, so the accesses are relaxed; copyable, so that records that hold it are copyable.
template <typename T>
class Relaxed {
public:
    constexpr Relaxed() noexcept = default;
    constexpr Relaxed(T initial) noexcept : value(initial) {}
    Relaxed(const Relaxed& other) noexcept : value(other.load()) {}
    Relaxed& operator=(const Relaxed& other) noexcept {
        store(other.load());
        return *this;
    }
    Relaxed& operator=(T changed) noexcept {
        store(changed);
        return *this;
    }
    operator T() const noexcept { return load(); }
    T load() const noexcept { return value.load(std::memory_order_relaxed); }
    void store(T changed) noexcept { value.store(changed, std::memory_order_relaxed); }

private:
    std::atomic<T> value{};
};

} // namespace rotika
