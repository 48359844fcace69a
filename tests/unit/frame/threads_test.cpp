// The threading interface in a process without a thread layer.
#include <gtest/gtest.h>

#include "oru/lib.h"
#include "oru/thread.h"
#include "tests/support/death.h"

namespace {

constexpr char kWords[] = "No Valid Threading Model Active";

oru_mtx_t mutex;
oru_rwlock_t lock;
oru_cond_t condition;
oru_sem_t semaphore;
oru_thread_attr_t attributes;
oru_thread_t thread;

TEST(NoThreadLayer, EveryOperationIsFatal) {
    int32_t value = 0;
    EXPECT_FATAL(oru_sem_init(&semaphore, 1), kWords);
    EXPECT_FATAL(oru_sem_wait(&semaphore), kWords);
    EXPECT_FATAL(oru_sem_post(&semaphore), kWords);
    EXPECT_FATAL(oru_sem_destroy(&semaphore), kWords);
    EXPECT_FATAL(oru_sem_getvalue(&semaphore, &value), kWords);
    EXPECT_FATAL(oru_thread_create(&thread, nullptr, nullptr, nullptr), kWords);
    EXPECT_FATAL(oru_thread_id(thread), kWords);
    EXPECT_FATAL(oru_self_thread_id(), kWords);
    EXPECT_FATAL(oru_self_thread(), kWords);
    EXPECT_FATAL(oru_thread_yield(), kWords);
    EXPECT_FATAL(oru_thread_may_yield(), kWords);
    EXPECT_FATAL(oru_thread_detach(thread), kWords);
    EXPECT_FATAL(oru_thread_join(thread, nullptr), kWords);
    EXPECT_FATAL(oru_thread_cleanup(&thread), kWords);
    EXPECT_FATAL(oru_thread_sleep(1), kWords);
    EXPECT_FATAL(oru_thread_poll(nullptr, 0, 0), kWords);
    EXPECT_FATAL(oru_thread_attr_init(&attributes), kWords);
    EXPECT_FATAL(oru_thread_attr_destroy(&attributes), kWords);
    EXPECT_FATAL(oru_thread_attr_setdetachstate(&attributes, 1), kWords);
    EXPECT_FATAL(oru_thread_attr_setname(&attributes, "name"), kWords);
    EXPECT_FATAL(oru_mtx_init("name", &mutex, nullptr), kWords);
    EXPECT_FATAL(oru_mtx_destroy(&mutex), kWords);
    EXPECT_FATAL(oru_mtx_lock(&mutex), kWords);
    EXPECT_FATAL(oru_mtx_trylock(&mutex), kWords);
    EXPECT_FATAL(oru_mtx_unlock(&mutex), kWords);
    EXPECT_FATAL(oru_recursive_mutex_init("name", &mutex), kWords);
    EXPECT_FATAL(oru_recursive_mutex_destroy(&mutex), kWords);
    EXPECT_FATAL(oru_recursive_mutex_lock(&mutex), kWords);
    EXPECT_FATAL(oru_recursive_mutex_unlock(&mutex), kWords);
    EXPECT_FATAL(oru_rwlock_init("name", &lock, nullptr), kWords);
    EXPECT_FATAL(oru_rwlock_destroy(&lock), kWords);
    EXPECT_FATAL(oru_rwlock_rdlock(&lock), kWords);
    EXPECT_FATAL(oru_rwlock_wrlock(&lock), kWords);
    EXPECT_FATAL(oru_rwlock_tryrdlock(&lock), kWords);
    EXPECT_FATAL(oru_rwlock_unlock(&lock), kWords);
    EXPECT_FATAL(oru_cond_init(&condition, nullptr), kWords);
    EXPECT_FATAL(oru_cond_destroy(&condition), kWords);
    EXPECT_FATAL(oru_cond_wait(&condition, &mutex), kWords);
    EXPECT_FATAL(oru_cond_wait_r(&condition, &mutex), kWords);
    EXPECT_FATAL(oru_cond_signal(&condition), kWords);
    EXPECT_FATAL(oru_cond_broadcast(&condition), kWords);
    EXPECT_FATAL(oru_cond_timedwait(&condition, &mutex, 1), kWords);
    EXPECT_FATAL(oru_cond_timedwait_r(&condition, &mutex, 1), kWords);
}

TEST(NoThreadLayer, HandlesAreRealUnderEveryModel) {
    oru_thread_t handle = 17;
    EXPECT_NE(oru_thread_is_valid(&handle), 0);
    EXPECT_EQ(oru_thread_init(&handle), 0);
    EXPECT_EQ(handle, 0u);
    EXPECT_EQ(oru_thread_is_valid(&handle), 0);
    EXPECT_EQ(oru_thread_init(nullptr), -1);
    EXPECT_EQ(oru_thread_is_valid(nullptr), 0);
    set_lock_logging();
    unset_lock_logging();
}

}  // namespace
