/*
 * Threads and locks.
 *
 * The library has no thread library of its own. Every operation here but the
 * four of the last section is weak in it and ends the process when it is
 * called; a thread layer that is linked before the library, or preloaded,
 * takes its place. What is told below is what liboruthread, the layer on POSIX
 * threads, does.
 *
 * 1. Results are 0 or an errno number:
 *      1  EPERM      the calling thread does not hold the lock
 *      3  ESRCH      no thread that could be joined has this handle
 *     11  EAGAIN     the system has no room for one more (thread, reader, depth)
 *     12  ENOMEM     memory ran out
 *     16  EBUSY      a try-lock found the lock taken; what is destroyed is held
 *     22  EINVAL     a null or impossible argument, or an object that was destroyed
 *     35  EDEADLK    the wait could never end, since the caller waits for itself
 *     75  EOVERFLOW  a semaphore is at its highest value
 *    110  ETIMEDOUT  a wait ran out of time
 *    Output arguments are written on 0 only.
 * 2. Locks, conditions, semaphores and attributes are storage of their owner,
 *    128 bytes, 16-byte aligned. The first 32 bytes hold the name; where the
 *    other 96 are zero the object is ready for use: an unlocked lock, a
 *    condition without waiters, a semaphore of value 0, attributes of a
 *    joinable thread. A static object so needs no initialiser call. Storage of
 *    unknown contents does. An object stays at its address and is not copied,
 *    attributes excepted.
 * 3. Names are cut at 31 bytes.
 * 4. A destroyed object answers 22 until it is initialised again. Nobody may
 *    be using an object while it is initialised or destroyed.
 * 5. All operations may be called from any thread, also from one that was not
 *    made here; only oru_sem_post may be called from a signal handler.
 *    Waits go on after a signal handler has run. Threads must not be cancelled
 *    while they are inside an operation.
 * 6. Times are milliseconds from the call on, on the monotonic clock: a change
 *    of the time of day neither shortens nor prolongs a wait.
 */
#ifndef ORU_THREAD_H
#define ORU_THREAD_H

#include "oru/base.h"

ORU_BEGIN_DECLS

struct pollfd;

/* Bytes of a name with its zero. */
#define ORU_THREAD_NAME_SIZE 32

#define ORU_THREAD_STORAGE_                              \
    {                                                    \
        char name[ORU_THREAD_NAME_SIZE];                 \
        unsigned char state[128 - ORU_THREAD_NAME_SIZE]; \
    }                                                    \
    __attribute__((aligned(16)))

/* `name` may be read; `state` belongs to the thread layer. */
typedef struct oru_mtx ORU_THREAD_STORAGE_ oru_mtx_t;
typedef struct oru_rwlock ORU_THREAD_STORAGE_ oru_rwlock_t;
typedef struct oru_cond ORU_THREAD_STORAGE_ oru_cond_t;
typedef struct oru_sem ORU_THREAD_STORAGE_ oru_sem_t;
typedef struct oru_thread_attr ORU_THREAD_STORAGE_ oru_thread_attr_t;

#undef ORU_THREAD_STORAGE_

/*
 * Initialiser of a static lock, condition, semaphore or attribute record with
 * a name, a literal of at most 31 bytes:
 *     static oru_rwlock_t table_lock = ORU_THREAD_NAMED("table_lock");
 */
#define ORU_THREAD_NAMED(name_literal) \
    {                                  \
        name_literal, {                \
            0                          \
        }                              \
    }

/* A thread; 0 is no thread. Handles are not used again for later threads. */
typedef uintptr_t oru_thread_t;

/* ---- Mutexes ---------------------------------------------------------------
 *
 * Held by one thread, which is the one to unlock it. The recursive operations
 * work on the same storage; a mutex should be used with one family only.
 */

/* Makes `mutex` an unlocked mutex. `name` is copied, null for none;
   `attributes` must be null. 0 or 22. */
ORU_API int32_t oru_mtx_init(const char *name, oru_mtx_t *mutex, const void *attributes);
/* Waits until the mutex is free and takes it. 0, 22, or 35 when the caller holds it already. */
ORU_API int32_t oru_mtx_lock(oru_mtx_t *mutex);
/* Takes the mutex when it is free. 0, 22, or 16 when anybody holds it, the caller included. */
ORU_API int32_t oru_mtx_trylock(oru_mtx_t *mutex);
/* Gives the mutex back. 0, 22, or 1 when the caller does not hold it. */
ORU_API int32_t oru_mtx_unlock(oru_mtx_t *mutex);
/* Ends the use of a mutex. 0, 22, or 16 when it is held, and then it stays as it is. */
ORU_API int32_t oru_mtx_destroy(oru_mtx_t *mutex);

/* As oru_mtx_init, for a mutex that its holder may take again. 0 or 22. */
ORU_API int32_t oru_recursive_mutex_init(const char *name, oru_mtx_t *mutex);
/* Takes the mutex, once more when the caller holds it. 0, 22, or 11 at a depth of 2^32 - 1. */
ORU_API int32_t oru_recursive_mutex_lock(oru_mtx_t *mutex);
/* Undoes one lock; the mutex is free after as many unlocks as locks. 0, 22, or 1 when the
   caller does not hold it. */
ORU_API int32_t oru_recursive_mutex_unlock(oru_mtx_t *mutex);
/* As oru_mtx_destroy. */
ORU_API int32_t oru_recursive_mutex_destroy(oru_mtx_t *mutex);

/* ---- Reader-writer locks ---------------------------------------------------
 *
 * Held by any number of readers or by one writer. A reader may read-lock again
 * and unlocks as often. Readers go before waiting writers. A reader that asks
 * for the write lock waits for itself for ever; this is not detected.
 */

/* Makes `lock` a free lock. `name` is copied, null for none; `attributes` must be null. 0 or 22. */
ORU_API int32_t oru_rwlock_init(const char *name, oru_rwlock_t *lock, const void *attributes);
/* Ends the use of a lock. 0, 22, or 16 when it is held, and then it stays as it is. */
ORU_API int32_t oru_rwlock_destroy(oru_rwlock_t *lock);
/* Takes the lock for reading. 0, 22, 11, or 35 when the caller is the writer. */
ORU_API int32_t oru_rwlock_rdlock(oru_rwlock_t *lock);
/* Takes the lock for writing. 0, 22, or 35 when the caller is the writer already. */
ORU_API int32_t oru_rwlock_wrlock(oru_rwlock_t *lock);
/* Takes the lock for reading unless a writer holds it, which gives 16. 0, 22, 11 or 16. */
ORU_API int32_t oru_rwlock_tryrdlock(oru_rwlock_t *lock);
/* Gives back what the caller holds. 0, 22, or 1 when nobody holds the lock or another thread
   is its writer. */
ORU_API int32_t oru_rwlock_unlock(oru_rwlock_t *lock);

/* ---- Conditions ------------------------------------------------------------
 *
 * A waiter gives up its mutex while it waits and holds it again when the call
 * returns, whatever the result of the wait. A wait may end without a signal,
 * so what is waited for is tested in a loop. All waiters of a condition use
 * the same mutex.
 */

/* Makes `condition` one without waiters and without name; `attributes` must be null. 0 or 22. */
ORU_API int32_t oru_cond_init(oru_cond_t *condition, const void *attributes);
/* Ends the use of a condition on which nobody waits. Waiters that were woken may still be on
   their way out, and the call waits for them to be. 0 or 22. */
ORU_API int32_t oru_cond_destroy(oru_cond_t *condition);
/* Waits for a signal. The caller holds `mutex`, once. 0, 1 when it does not hold it, 22 also
   when it holds it several times. */
ORU_API int32_t oru_cond_wait(oru_cond_t *condition, oru_mtx_t *mutex);
/* The same with a recursive mutex, which may be held to any depth: the wait gives it up wholly,
   and the depth is as before when the call returns. 0, 1 or 22. */
ORU_API int32_t oru_cond_wait_r(oru_cond_t *condition, oru_mtx_t *mutex);
/* As oru_cond_wait, but gives 110 once `milliseconds` have passed; negative ones give 22. */
ORU_API int32_t oru_cond_timedwait(oru_cond_t *condition, oru_mtx_t *mutex, int64_t milliseconds);
/* As oru_cond_wait_r, with the time of oru_cond_timedwait. */
ORU_API int32_t oru_cond_timedwait_r(oru_cond_t *condition, oru_mtx_t *mutex, int64_t milliseconds);
/* Wakes one waiter, if there is any; all of them. The mutex need not be held. 0 or 22. */
ORU_API int32_t oru_cond_signal(oru_cond_t *condition);
ORU_API int32_t oru_cond_broadcast(oru_cond_t *condition);

/* ---- Semaphores ------------------------------------------------------------ */

/* Makes `semaphore` one of `value`, at most 2^31 - 1, without name. 0 or 22. */
ORU_API int32_t oru_sem_init(oru_sem_t *semaphore, uint32_t value);
/* Waits until the value is above 0 and takes 1 away. 0 or 22. */
ORU_API int32_t oru_sem_wait(oru_sem_t *semaphore);
/* Adds 1 and wakes a waiter. 0, 22, or 75 when the value is 2^31 - 1. */
ORU_API int32_t oru_sem_post(oru_sem_t *semaphore);
/* Writes the value of this moment, never negative. 0, or 22, for a null `out_value` too. */
ORU_API int32_t oru_sem_getvalue(oru_sem_t *semaphore, int32_t *out_value);
/* Ends the use of a semaphore on which nobody waits. 0 or 22. */
ORU_API int32_t oru_sem_destroy(oru_sem_t *semaphore);

/* ---- Thread attributes -----------------------------------------------------
 *
 * Read while a thread is made and not kept; one record serves any number of
 * threads, from several threads at a time as long as nobody changes it.
 */

/* Makes `attributes` those of a joinable thread without name. 0 or 22. */
ORU_API int32_t oru_thread_attr_init(oru_thread_attr_t *attributes);
/* Ends the use of the record; threads made with it go on. 0 or 22. */
ORU_API int32_t oru_thread_attr_destroy(oru_thread_attr_t *attributes);
/* `detached` non-zero: the thread is made detached; 0: joinable. 0 or 22. */
ORU_API int32_t oru_thread_attr_setdetachstate(oru_thread_attr_t *attributes, int32_t detached);
/* Sets the name, copied; an empty one means that the thread keeps its maker's. 0, or 22, for a
   null `name` too. */
ORU_API int32_t oru_thread_attr_setname(oru_thread_attr_t *attributes, const char *name);

/* ---- Threads --------------------------------------------------------------- */

/*
 * Starts a thread that runs `start(argument)`; its result is the thread's.
 * `attributes` may be null: joinable, named as its maker. The system shows the
 * first 15 bytes of the name. `*out_thread` may be written after the thread has
 * begun to run, so the thread itself asks oru_self_thread. A joinable thread is
 * joined or detached once, or the memory of its stack stays taken.
 * 0, 11, 12, or 22 for a null `out_thread` or `start` or destroyed attributes.
 */
ORU_API int32_t oru_thread_create(oru_thread_t *out_thread, const oru_thread_attr_t *attributes,
                                  void *(*start)(void *), void *argument);
/*
 * Waits for the end of a joinable thread; `out_result`, which may be null, gets
 * its result. The handle is out of use afterwards. 0, 22 for the handle 0 and
 * for a thread that somebody else is joining, 35 for the caller itself, 3 for
 * every other handle: joined, detached, or of a thread not made here.
 */
ORU_API int32_t oru_thread_join(oru_thread_t thread, void **out_result);
/* Lets a joinable thread, which may be the caller, end without being joined; the handle can no
   longer be joined. 0, 22 and 3 as oru_thread_join. */
ORU_API int32_t oru_thread_detach(oru_thread_t thread);
/* Forgets a handle: writes 0 into it and touches nothing else, so that a running thread goes on
   and one still to be joined stays so under other copies of the handle. 0, or 22 for null. */
ORU_API int32_t oru_thread_cleanup(oru_thread_t *thread);

/* Handle of the calling thread, never 0, the same for its whole life; for a thread made by
   oru_thread_create the one that its maker got. */
ORU_API oru_thread_t oru_self_thread(void);
/* Number of the calling thread: never 0, and no other thread of the process has or gets it. */
ORU_API uint64_t oru_self_thread_id(void);
/* Number of a thread, running or ended, as it would read it itself; 0 for the handle 0. */
ORU_API uint64_t oru_thread_id(oru_thread_t thread);

/* Lets other threads run that are ready to. Always 0. */
ORU_API int32_t oru_thread_yield(void);
/* Marks a place where a long computation can let others run; here the same as
   oru_thread_yield. Always 0. */
ORU_API int32_t oru_thread_may_yield(void);
/* Waits for at least `milliseconds`; 0 returns at once. 0, or 22 for negative ones. */
ORU_API int32_t oru_thread_sleep(int64_t milliseconds);
/*
 * Waits until a descriptor of the `count` ones in `fds` is ready, as poll does,
 * or until `milliseconds` have passed; negative ones wait without end, 0 only
 * looks. A signal handler that ran does not end or prolong the wait. 0 with the
 * `revents` filled when there are any to look at, 110 when there are none, 12,
 * or 22: null `fds` with a count, a count above the limit of open files, a wait
 * without end for nothing. A count of 0 is a sleep that gives 110.
 */
ORU_API int32_t oru_thread_poll(struct pollfd *fds, uint64_t count, int64_t milliseconds);

/* ---- Initialisation -------------------------------------------------------- */

/* Called by oru_lib_init; `have_setup` is non-zero when that was given a set-up function.
   Any result but 0 stops it and is handed to its caller. This layer needs no set-up: always 0. */
ORU_API int32_t oruapi_thread_library_init(int32_t have_setup);

/* ---- The same under every thread layer ------------------------------------- */

/* Makes `*thread` no thread, by writing 0. 0, or -1 for null. */
ORU_API int32_t oru_thread_init(oru_thread_t *thread);
/* Non-zero when `*thread` is not 0; 0 for null. */
ORU_API int32_t oru_thread_is_valid(const oru_thread_t *thread);
/* Kept for callers of old; both do nothing. */
ORU_API void set_lock_logging(void);
ORU_API void unset_lock_logging(void);

ORU_END_DECLS

#endif
