#include <atomic>
#include <cerrno>

#include "threads/self.h"
#include "threads/storage.h"

using namespace oru::threads;

// The holders are counted beside the POSIX lock, which an unlock too many would leave in ruins.

namespace {

constexpr auto kRelaxed = std::memory_order_relaxed;

int32_t take_for_reading(oru_rwlock_t *lock, int (*take)(pthread_rwlock_t *)) {
    RwlockState *state = live(lock);
    if (state == nullptr) {
        return EINVAL;
    }
    const int rc = take(&state->lock);
    if (rc == 0) {
        std::atomic_ref(state->readers).fetch_add(1, kRelaxed);
    }
    return rc;
}

// False when there is no reader whose hold could be given back.
bool drop_reader(RwlockState &state) {
    std::atomic_ref readers(state.readers);
    uint32_t count = readers.load(kRelaxed);
    while (count != 0) {
        if (readers.compare_exchange_weak(count, count - 1, kRelaxed)) {
            return true;
        }
    }
    return false;
}

// Takes one hold of the caller out of the books.
bool drop_hold(RwlockState &state) {
    std::atomic_ref writer(state.writer);
    const uintptr_t current = writer.load(kRelaxed);
    if (current == 0) {
        return drop_reader(state);
    }
    if (current != self()) {
        return false;
    }
    writer.store(0, kRelaxed);
    return true;
}

bool is_held(RwlockState &state) {
    return std::atomic_ref(state.writer).load(kRelaxed) != 0 ||
           std::atomic_ref(state.readers).load(kRelaxed) != 0;
}

}  // namespace

int32_t oru_rwlock_init(const char *name, oru_rwlock_t *lock, const void *attributes) {
    if (lock == nullptr || attributes != nullptr) {
        return EINVAL;
    }
    return pthread_rwlock_init(&renew(lock, name)->lock, nullptr);
}

int32_t oru_rwlock_destroy(oru_rwlock_t *lock) {
    RwlockState *state = live(lock);
    if (state == nullptr) {
        return EINVAL;
    }
    if (is_held(*state)) {
        return EBUSY;
    }
    const int rc = pthread_rwlock_destroy(&state->lock);
    if (rc == 0) {
        state->retired = kRetired;
    }
    return rc;
}

int32_t oru_rwlock_rdlock(oru_rwlock_t *lock) {
    return take_for_reading(lock, pthread_rwlock_rdlock);
}

int32_t oru_rwlock_tryrdlock(oru_rwlock_t *lock) {
    return take_for_reading(lock, pthread_rwlock_tryrdlock);
}

int32_t oru_rwlock_wrlock(oru_rwlock_t *lock) {
    RwlockState *state = live(lock);
    if (state == nullptr) {
        return EINVAL;
    }
    const int rc = pthread_rwlock_wrlock(&state->lock);
    if (rc == 0) {
        std::atomic_ref(state->writer).store(self(), kRelaxed);
    }
    return rc;
}

int32_t oru_rwlock_unlock(oru_rwlock_t *lock) {
    RwlockState *state = live(lock);
    if (state == nullptr) {
        return EINVAL;
    }
    return drop_hold(*state) ? pthread_rwlock_unlock(&state->lock) : EPERM;
}
