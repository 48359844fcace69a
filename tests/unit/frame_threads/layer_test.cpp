// With a thread layer linked ahead of the library its operations are the layer's.
#include <gtest/gtest.h>

#include <cstdlib>

#include "oru/lib.h"
#include "oru/thread.h"
#include "tests/support/child.h"
#include "tests/support/trace_capture.h"

namespace {

TEST(ThreadLayer, TakesThePlaceOfTheWeakOperations) {
    oru_mtx_t mutex{};
    EXPECT_EQ(oru_mtx_init("mutex", &mutex, nullptr), 0);
    EXPECT_EQ(oru_mtx_lock(&mutex), 0);
    EXPECT_EQ(oru_mtx_trylock(&mutex), 16);
    EXPECT_EQ(oru_mtx_unlock(&mutex), 0);
    EXPECT_EQ(oru_mtx_destroy(&mutex), 0);
    oru_rwlock_t lock{};
    EXPECT_EQ(oru_rwlock_rdlock(&lock), 0);
    EXPECT_EQ(oru_rwlock_unlock(&lock), 0);
    oru_cond_t condition{};
    EXPECT_EQ(oru_cond_signal(&condition), 0);
    oru_sem_t semaphore{};
    EXPECT_EQ(oru_sem_init(&semaphore, 1), 0);
    EXPECT_EQ(oru_sem_wait(&semaphore), 0);
    EXPECT_NE(oru_self_thread_id(), 0u);
}

TEST(ThreadLayer, IsAskedByTheLibraryItself) {
    oru::test::expect_in_child([] {
        setenv("ORU_DEFAULT_LIB", FAKE_BACKEND, 1);
        oru::test::TraceCapture traces;
        intptr_t received = 0;
        EXPECT_EQ(oru_lib_init(nullptr, 5, &received), 4711);
        EXPECT_EQ(received, 5);
        EXPECT_FALSE(traces.has(7, "Faking thread support with internal weak functions 0"));
    });
}

TEST(ThreadLayer, HandlesAreTheLibrarysUnderEveryModel) {
    oru_thread_t handle = 17;
    EXPECT_NE(oru_thread_is_valid(&handle), 0);
    EXPECT_EQ(oru_thread_init(&handle), 0);
    EXPECT_EQ(oru_thread_is_valid(&handle), 0);
    EXPECT_EQ(oru_thread_init(nullptr), -1);
    EXPECT_EQ(oru_thread_is_valid(nullptr), 0);
}

}  // namespace
