#include <cerrno>

#include "threads/clock.h"
#include "threads/mutex.h"

using namespace oru::threads;

namespace {

// `deadline` null waits without end.
int wait_until(ConditionState &condition, MutexState &mutex, const timespec *deadline) {
    if (deadline == nullptr) {
        return pthread_cond_wait(&condition.condition, &mutex.mutex);
    }
    return pthread_cond_clockwait(&condition.condition, &mutex.mutex, CLOCK_MONOTONIC, deadline);
}

int32_t wait(oru_cond_t *condition, oru_mtx_t *mutex, uint32_t deepest, const timespec *deadline) {
    ConditionState *waited = live(condition);
    MutexState *held = live(mutex);
    if (waited == nullptr || held == nullptr) {
        return EINVAL;
    }
    if (!held_by_self(*held)) {
        return EPERM;
    }
    const uint32_t depth = held->depth;
    if (depth > deepest) {
        return EINVAL;
    }
    disown(*held);
    const int rc = wait_until(*waited, *held, deadline);
    own(*held, depth);
    return rc;
}

int32_t timed_wait(oru_cond_t *condition, oru_mtx_t *mutex, uint32_t deepest,
                   int64_t milliseconds) {
    if (milliseconds < 0) {
        return EINVAL;
    }
    const timespec deadline = deadline_after(milliseconds);
    return wait(condition, mutex, deepest, &deadline);
}

}  // namespace

int32_t oru_cond_init(oru_cond_t *condition, const void *attributes) {
    if (condition == nullptr || attributes != nullptr) {
        return EINVAL;
    }
    return pthread_cond_init(&renew(condition, nullptr)->condition, nullptr);
}

int32_t oru_cond_destroy(oru_cond_t *condition) {
    ConditionState *state = live(condition);
    if (state == nullptr) {
        return EINVAL;
    }
    const int rc = pthread_cond_destroy(&state->condition);
    if (rc == 0) {
        state->retired = kRetired;
    }
    return rc;
}

int32_t oru_cond_wait(oru_cond_t *condition, oru_mtx_t *mutex) {
    return wait(condition, mutex, 1, nullptr);
}

int32_t oru_cond_wait_r(oru_cond_t *condition, oru_mtx_t *mutex) {
    return wait(condition, mutex, UINT32_MAX, nullptr);
}

int32_t oru_cond_timedwait(oru_cond_t *condition, oru_mtx_t *mutex, int64_t milliseconds) {
    return timed_wait(condition, mutex, 1, milliseconds);
}

int32_t oru_cond_timedwait_r(oru_cond_t *condition, oru_mtx_t *mutex, int64_t milliseconds) {
    return timed_wait(condition, mutex, UINT32_MAX, milliseconds);
}

int32_t oru_cond_signal(oru_cond_t *condition) {
    ConditionState *state = live(condition);
    return state == nullptr ? EINVAL : pthread_cond_signal(&state->condition);
}

int32_t oru_cond_broadcast(oru_cond_t *condition) {
    ConditionState *state = live(condition);
    return state == nullptr ? EINVAL : pthread_cond_broadcast(&state->condition);
}
