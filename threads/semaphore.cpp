#include <cerrno>
#include <climits>

#include "threads/storage.h"

using namespace oru::threads;

namespace {

// The POSIX calls report through errno.
int32_t result_of(int rc) {
    return rc == 0 ? 0 : errno;
}

}  // namespace

int32_t oru_sem_init(oru_sem_t *semaphore, uint32_t value) {
    if (semaphore == nullptr || value > SEM_VALUE_MAX) {
        return EINVAL;
    }
    return result_of(sem_init(&renew(semaphore, nullptr)->semaphore, 0, value));
}

int32_t oru_sem_wait(oru_sem_t *semaphore) {
    SemaphoreState *state = live(semaphore);
    if (state == nullptr) {
        return EINVAL;
    }
    int32_t rc;
    do {
        rc = result_of(sem_wait(&state->semaphore));
    } while (rc == EINTR);
    return rc;
}

int32_t oru_sem_post(oru_sem_t *semaphore) {
    SemaphoreState *state = live(semaphore);
    if (state == nullptr) {
        return EINVAL;
    }
    // A signal handler that posts must not change the errno of what it interrupted.
    const int saved = errno;
    const int32_t rc = result_of(sem_post(&state->semaphore));
    errno = saved;
    return rc;
}

int32_t oru_sem_getvalue(oru_sem_t *semaphore, int32_t *out_value) {
    SemaphoreState *state = live(semaphore);
    if (state == nullptr || out_value == nullptr) {
        return EINVAL;
    }
    return result_of(sem_getvalue(&state->semaphore, out_value));
}

int32_t oru_sem_destroy(oru_sem_t *semaphore) {
    SemaphoreState *state = live(semaphore);
    if (state == nullptr) {
        return EINVAL;
    }
    const int32_t rc = result_of(sem_destroy(&state->semaphore));
    if (rc == 0) {
        state->retired = kRetired;
    }
    return rc;
}
