// The threading interface as the library itself has it: weak, and of no use. A thread layer that
// comes earlier in the search order takes its place; without one, everything that takes no lock
// works and the first lock ends the process.
#include "frame/trace.h"
#include "oru/thread.h"

#define ORU_NEEDS_THREAD_LAYER(result, name, parameters) \
    [[gnu::weak]] result name parameters {               \
        ORU_FATAL("No Valid Threading Model Active");    \
    }

// Semaphores.
ORU_NEEDS_THREAD_LAYER(int32_t, oru_sem_init, (oru_sem_t *, uint32_t))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_sem_wait, (oru_sem_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_sem_post, (oru_sem_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_sem_destroy, (oru_sem_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_sem_getvalue, (oru_sem_t *, int32_t *))

// Threads.
ORU_NEEDS_THREAD_LAYER(int32_t, oru_thread_create,
                       (oru_thread_t *, const oru_thread_attr_t *, void *(*)(void *), void *))
ORU_NEEDS_THREAD_LAYER(uint64_t, oru_thread_id, (oru_thread_t))
ORU_NEEDS_THREAD_LAYER(uint64_t, oru_self_thread_id, ())
ORU_NEEDS_THREAD_LAYER(oru_thread_t, oru_self_thread, ())
ORU_NEEDS_THREAD_LAYER(int32_t, oru_thread_yield, ())
ORU_NEEDS_THREAD_LAYER(int32_t, oru_thread_may_yield, ())
ORU_NEEDS_THREAD_LAYER(int32_t, oru_thread_detach, (oru_thread_t))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_thread_join, (oru_thread_t, void **))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_thread_cleanup, (oru_thread_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_thread_sleep, (int64_t))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_thread_poll, (struct pollfd *, uint64_t, int64_t))

// Thread attributes.
ORU_NEEDS_THREAD_LAYER(int32_t, oru_thread_attr_init, (oru_thread_attr_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_thread_attr_destroy, (oru_thread_attr_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_thread_attr_setdetachstate, (oru_thread_attr_t *, int32_t))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_thread_attr_setname, (oru_thread_attr_t *, const char *))

// Mutexes.
ORU_NEEDS_THREAD_LAYER(int32_t, oru_mtx_init, (const char *, oru_mtx_t *, const void *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_mtx_destroy, (oru_mtx_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_mtx_lock, (oru_mtx_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_mtx_trylock, (oru_mtx_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_mtx_unlock, (oru_mtx_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_recursive_mutex_init, (const char *, oru_mtx_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_recursive_mutex_destroy, (oru_mtx_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_recursive_mutex_lock, (oru_mtx_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_recursive_mutex_unlock, (oru_mtx_t *))

// Reader-writer locks.
ORU_NEEDS_THREAD_LAYER(int32_t, oru_rwlock_init, (const char *, oru_rwlock_t *, const void *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_rwlock_destroy, (oru_rwlock_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_rwlock_rdlock, (oru_rwlock_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_rwlock_wrlock, (oru_rwlock_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_rwlock_tryrdlock, (oru_rwlock_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_rwlock_unlock, (oru_rwlock_t *))

// Conditions.
ORU_NEEDS_THREAD_LAYER(int32_t, oru_cond_init, (oru_cond_t *, const void *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_cond_destroy, (oru_cond_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_cond_wait, (oru_cond_t *, oru_mtx_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_cond_wait_r, (oru_cond_t *, oru_mtx_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_cond_signal, (oru_cond_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_cond_broadcast, (oru_cond_t *))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_cond_timedwait, (oru_cond_t *, oru_mtx_t *, int64_t))
ORU_NEEDS_THREAD_LAYER(int32_t, oru_cond_timedwait_r, (oru_cond_t *, oru_mtx_t *, int64_t))

// A process without a thread layer passes the initialisation and fails when something takes a lock.
[[gnu::weak]] int32_t oruapi_thread_library_init(int32_t have_setup) {
    ORU_TRACE(oru::Level::detail, "Faking thread support with internal weak functions %u",
              static_cast<unsigned>(have_setup));
    return 0;
}

// The same under every threading model.

int32_t oru_thread_init(oru_thread_t *thread) {
    if (thread == nullptr)
        return -1;
    *thread = 0;
    return 0;
}

int32_t oru_thread_is_valid(const oru_thread_t *thread) {
    return thread != nullptr && *thread != 0;
}

void set_lock_logging() {}

void unset_lock_logging() {}
