#ifndef OLED_COMMON_RELAXED_ATOMIC_H
#define OLED_COMMON_RELAXED_ATOMIC_H

#include <atomic>

// A switch one thread sets and others poll: each read sees the last value
// whole and a reader notices a change at its next read, which is all a
// loop needs. Relaxed order, so a read of an aligned word stays a plain
// load on ARM (no barrier), as it was before the switches were atomic.
template <typename T>
class RelaxedAtomic {
public:
    constexpr explicit RelaxedAtomic(T value) : value_(value) {}
    RelaxedAtomic(const RelaxedAtomic&) = delete;
    RelaxedAtomic& operator=(const RelaxedAtomic&) = delete;

    operator T() const { return value_.load(std::memory_order_relaxed); }

    // The value, as std::atomic does: "a = b = false" sets both.
    T operator=(T value)
    {
        value_.store(value, std::memory_order_relaxed);
        return value;
    }

private:
    std::atomic<T> value_;
};

#endif
