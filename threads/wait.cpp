// What a thread does when it does nothing: yielding, sleeping, waiting for descriptors.
#include <poll.h>
#include <sched.h>

#include <cerrno>

#include "oru/thread.h"
#include "threads/clock.h"

using namespace oru::threads;

namespace {

// One wait; the result of ppoll, or a negative errno number.
int poll_once(pollfd *fds, nfds_t count, const timespec *deadline) {
    timespec left{};
    if (deadline != nullptr) {
        left = left_until(*deadline);
    }
    const int ready = ppoll(fds, count, deadline == nullptr ? nullptr : &left, nullptr);
    return ready < 0 ? -errno : ready;
}

}  // namespace

int32_t oru_thread_yield(void) {
    sched_yield();
    return 0;
}

int32_t oru_thread_may_yield(void) {
    return oru_thread_yield();
}

int32_t oru_thread_sleep(int64_t milliseconds) {
    if (milliseconds < 0) {
        return EINVAL;
    }
    if (milliseconds == 0) {
        return 0;
    }
    const timespec deadline = deadline_after(milliseconds);
    int rc;
    do {
        rc = clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr);
    } while (rc == EINTR);
    return rc;
}

int32_t oru_thread_poll(struct pollfd *fds, uint64_t count, int64_t milliseconds) {
    const bool endless = milliseconds < 0;
    if (count == 0 ? endless : fds == nullptr) {
        return EINVAL;
    }
    const timespec deadline = endless ? timespec{} : deadline_after(milliseconds);
    int ready;
    do {
        ready = poll_once(fds, count, endless ? nullptr : &deadline);
    } while (ready == -EINTR);
    if (ready < 0) {
        return -ready;
    }
    return ready == 0 ? ETIMEDOUT : 0;
}
