#include "threads/mutex.h"

#include <cerrno>

using namespace oru::threads;

// Recursion is counted here, over a plain POSIX mutex: zeroed storage cannot tell which kind it
// is to be, and a condition has to be able to give the mutex up at any depth.

namespace {

int32_t init(const char *name, oru_mtx_t *mutex) {
    if (mutex == nullptr) {
        return EINVAL;
    }
    return pthread_mutex_init(&renew(mutex, name)->mutex, nullptr);
}

int32_t take(MutexState &mutex, int (*lock)(pthread_mutex_t *)) {
    const int rc = lock(&mutex.mutex);
    if (rc == 0) {
        own(mutex, 1);
    }
    return rc;
}

int32_t unlock(oru_mtx_t *mutex) {
    MutexState *state = live(mutex);
    if (state == nullptr) {
        return EINVAL;
    }
    if (!held_by_self(*state)) {
        return EPERM;
    }
    if (state->depth > 1) {
        --state->depth;
        return 0;
    }
    // Nothing of the mutex is touched behind the unlock: its next holder may destroy it.
    disown(*state);
    return pthread_mutex_unlock(&state->mutex);
}

int32_t destroy(oru_mtx_t *mutex) {
    MutexState *state = live(mutex);
    if (state == nullptr) {
        return EINVAL;
    }
    if (owner_of(*state) != 0) {
        return EBUSY;
    }
    const int rc = pthread_mutex_destroy(&state->mutex);
    if (rc == 0) {
        state->retired = kRetired;
    }
    return rc;
}

}  // namespace

int32_t oru_mtx_init(const char *name, oru_mtx_t *mutex, const void *attributes) {
    return attributes != nullptr ? EINVAL : init(name, mutex);
}

int32_t oru_mtx_lock(oru_mtx_t *mutex) {
    MutexState *state = live(mutex);
    if (state == nullptr) {
        return EINVAL;
    }
    return held_by_self(*state) ? EDEADLK : take(*state, pthread_mutex_lock);
}

int32_t oru_mtx_trylock(oru_mtx_t *mutex) {
    MutexState *state = live(mutex);
    return state == nullptr ? EINVAL : take(*state, pthread_mutex_trylock);
}

int32_t oru_mtx_unlock(oru_mtx_t *mutex) {
    return unlock(mutex);
}

int32_t oru_mtx_destroy(oru_mtx_t *mutex) {
    return destroy(mutex);
}

int32_t oru_recursive_mutex_init(const char *name, oru_mtx_t *mutex) {
    return init(name, mutex);
}

int32_t oru_recursive_mutex_lock(oru_mtx_t *mutex) {
    MutexState *state = live(mutex);
    if (state == nullptr) {
        return EINVAL;
    }
    if (!held_by_self(*state)) {
        return take(*state, pthread_mutex_lock);
    }
    if (state->depth == UINT32_MAX) {
        return EAGAIN;
    }
    ++state->depth;
    return 0;
}

int32_t oru_recursive_mutex_unlock(oru_mtx_t *mutex) {
    return unlock(mutex);
}

int32_t oru_recursive_mutex_destroy(oru_mtx_t *mutex) {
    return destroy(mutex);
}
