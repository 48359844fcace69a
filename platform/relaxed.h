// Counters with one writer: the owner adds without a locked instruction, anybody may read.
#pragma once

#include <atomic>
#include <cstdint>

namespace oru::platform {

template <class T>
class OwnedCounter {
  public:
    void add(T n) { value_.store(get() + n, std::memory_order_relaxed); }
    void set(T n) { value_.store(n, std::memory_order_relaxed); }
    T get() const { return value_.load(std::memory_order_relaxed); }

  private:
    std::atomic<T> value_{0};
};

// The shared form, for what is counted rarely.
template <class T>
class SharedCounter {
  public:
    T add(T n) { return value_.fetch_add(n, std::memory_order_relaxed) + n; }
    T get() const { return value_.load(std::memory_order_relaxed); }
    void raise_to(T n) {
        T seen = get();
        while (seen < n && !value_.compare_exchange_weak(seen, n, std::memory_order_relaxed)) {
        }
    }

  private:
    std::atomic<T> value_{0};
};

}  // namespace oru::platform
