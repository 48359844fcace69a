// Times on the monotonic clock.
#pragma once

#include <cstdint>
#include <ctime>

namespace oru::threads {

inline constexpr int64_t kMillisecondsPerSecond = 1'000;
inline constexpr int64_t kNanosecondsPerMillisecond = 1'000'000;
inline constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;

inline timespec now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time;
}

// The moment `milliseconds`, not negative, from now. Even the longest of them, some 10^16
// seconds, leaves the sum far below the end of the seconds.
inline timespec deadline_after(int64_t milliseconds) {
    timespec time = now();
    time.tv_sec += milliseconds / kMillisecondsPerSecond;
    time.tv_nsec += milliseconds % kMillisecondsPerSecond * kNanosecondsPerMillisecond;
    if (time.tv_nsec >= kNanosecondsPerSecond) {
        time.tv_sec += 1;
        time.tv_nsec -= kNanosecondsPerSecond;
    }
    return time;
}

// What is left until `deadline`, zero when it has passed.
inline timespec left_until(const timespec &deadline) {
    const timespec time = now();
    timespec left{deadline.tv_sec - time.tv_sec, deadline.tv_nsec - time.tv_nsec};
    if (left.tv_nsec < 0) {
        left.tv_sec -= 1;
        left.tv_nsec += kNanosecondsPerSecond;
    }
    return left.tv_sec < 0 ? timespec{} : left;
}

}  // namespace oru::threads
