#include "support.h"

namespace oru::threads::test {
namespace {

oru_cond_t g_static_condition = ORU_THREAD_NAMED("static condition");

// A flag that is waited for, as such waits are written.
struct Flag {
    oru_mtx_t mutex = ORU_THREAD_NAMED("");
    oru_cond_t condition = ORU_THREAD_NAMED("");
    bool set = false;

    void raise(int32_t (*wake)(oru_cond_t *)) {
        EXPECT_EQ(oru_mtx_lock(&mutex), 0);
        set = true;
        EXPECT_EQ(wake(&condition), 0);
        EXPECT_EQ(oru_mtx_unlock(&mutex), 0);
    }
};

TEST(Condition, InitialisesStorageOfAnyContentsWithoutName) {
    auto condition = garbage<oru_cond_t>();
    EXPECT_EQ(oru_cond_init(&condition, nullptr), 0);
    EXPECT_STREQ(condition.name, "");
    EXPECT_EQ(oru_cond_signal(&condition), 0);
    EXPECT_EQ(oru_cond_broadcast(&condition), 0);
    EXPECT_EQ(oru_cond_destroy(&condition), 0);
}

TEST(Condition, NullAndImpossibleArgumentsGive22) {
    oru_mtx_t mutex = ORU_THREAD_NAMED("");
    oru_cond_t condition = ORU_THREAD_NAMED("");
    const int attribute = 0;
    EXPECT_EQ(oru_cond_init(nullptr, nullptr), 22);
    EXPECT_EQ(oru_cond_init(&condition, &attribute), 22);
    EXPECT_EQ(oru_cond_destroy(nullptr), 22);
    EXPECT_EQ(oru_cond_signal(nullptr), 22);
    EXPECT_EQ(oru_cond_broadcast(nullptr), 22);
    EXPECT_EQ(oru_mtx_lock(&mutex), 0);
    EXPECT_EQ(oru_cond_wait(nullptr, &mutex), 22);
    EXPECT_EQ(oru_cond_wait(&condition, nullptr), 22);
    EXPECT_EQ(oru_cond_wait_r(nullptr, &mutex), 22);
    EXPECT_EQ(oru_cond_wait_r(&condition, nullptr), 22);
    EXPECT_EQ(oru_cond_timedwait(nullptr, &mutex, 0), 22);
    EXPECT_EQ(oru_cond_timedwait(&condition, nullptr, 0), 22);
    EXPECT_EQ(oru_cond_timedwait(&condition, &mutex, -1), 22);
    EXPECT_EQ(oru_cond_timedwait_r(nullptr, &mutex, 0), 22);
    EXPECT_EQ(oru_cond_timedwait_r(&condition, nullptr, 0), 22);
    EXPECT_EQ(oru_cond_timedwait_r(&condition, &mutex, -1), 22);
    EXPECT_EQ(oru_mtx_unlock(&mutex), 0);
}

TEST(Condition, WaitWithAMutexThatIsNotHeldGives1) {
    oru_mtx_t mutex = ORU_THREAD_NAMED("");
    oru_cond_t condition = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_cond_wait(&condition, &mutex), 1);
    EXPECT_EQ(oru_cond_wait_r(&condition, &mutex), 1);
    EXPECT_EQ(oru_cond_timedwait(&condition, &mutex, 0), 1);
    EXPECT_EQ(oru_cond_timedwait_r(&condition, &mutex, 0), 1);
}

TEST(Condition, SignalWakesAWaiter) {
    Flag flag;
    bool seen = false;
    {
        const Thread waiter([&] {
            EXPECT_EQ(oru_mtx_lock(&flag.mutex), 0);
            while (!flag.set) {
                EXPECT_EQ(oru_cond_wait(&flag.condition, &flag.mutex), 0);
            }
            seen = true;
            EXPECT_EQ(oru_mtx_unlock(&flag.mutex), 0);
        });
        EXPECT_EQ(oru_thread_sleep(20), 0);
        flag.raise(oru_cond_signal);
    }
    EXPECT_TRUE(seen);
    EXPECT_EQ(oru_cond_destroy(&flag.condition), 0);
}

TEST(Condition, BroadcastWakesAllWaiters) {
    Flag flag;
    oru_sem_t ready = ORU_THREAD_NAMED("");
    int woken = 0;
    const auto body = [&] {
        EXPECT_EQ(oru_mtx_lock(&flag.mutex), 0);
        EXPECT_EQ(oru_sem_post(&ready), 0);
        while (!flag.set) {
            EXPECT_EQ(oru_cond_wait(&flag.condition, &flag.mutex), 0);
        }
        ++woken;
        EXPECT_EQ(oru_mtx_unlock(&flag.mutex), 0);
    };
    {
        const Thread a(body), b(body), c(body);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(oru_sem_wait(&ready), 0);
        }
        // Each has posted with the mutex held, so all wait once it can be taken.
        flag.raise(oru_cond_broadcast);
    }
    EXPECT_EQ(woken, 3);
}

TEST(Condition, TimedWaitOnAZeroedStaticOneRunsOutOfTime) {
    oru_mtx_t mutex = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_mtx_lock(&mutex), 0);
    int32_t rc = 0;
    EXPECT_GE(elapsed_ms([&] {
                  do {
                      rc = oru_cond_timedwait(&g_static_condition, &mutex, 50);
                  } while (rc == 0);
              }),
              50);
    EXPECT_EQ(rc, 110);
    EXPECT_EQ(in_other_thread([&] { return oru_mtx_trylock(&mutex); }), 16);
    EXPECT_EQ(oru_mtx_unlock(&mutex), 0);
}

TEST(Condition, TimedWaitOfNoTimeGives110) {
    oru_mtx_t mutex = ORU_THREAD_NAMED("");
    oru_cond_t condition = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_mtx_lock(&mutex), 0);
    EXPECT_EQ(oru_cond_timedwait(&condition, &mutex, 0), 110);
    EXPECT_EQ(oru_cond_timedwait_r(&condition, &mutex, 0), 110);
    EXPECT_EQ(oru_mtx_unlock(&mutex), 0);
}

TEST(Condition, TimedWaitOfTheLongestTimeIsWokenBySignal) {
    Flag flag;
    EXPECT_EQ(oru_mtx_lock(&flag.mutex), 0);
    const Thread waker([&] { flag.raise(oru_cond_signal); });
    while (!flag.set) {
        EXPECT_EQ(oru_cond_timedwait(&flag.condition, &flag.mutex, INT64_MAX), 0);
    }
    EXPECT_EQ(oru_mtx_unlock(&flag.mutex), 0);
}

TEST(Condition, PlainWaitRefusesADeeperMutex) {
    oru_mtx_t mutex = ORU_THREAD_NAMED("");
    oru_cond_t condition = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_recursive_mutex_lock(&mutex), 0);
    EXPECT_EQ(oru_recursive_mutex_lock(&mutex), 0);
    EXPECT_EQ(oru_cond_wait(&condition, &mutex), 22);
    EXPECT_EQ(oru_cond_timedwait(&condition, &mutex, 0), 22);
    EXPECT_EQ(oru_recursive_mutex_unlock(&mutex), 0);
    EXPECT_EQ(oru_recursive_mutex_unlock(&mutex), 0);
    EXPECT_EQ(oru_recursive_mutex_unlock(&mutex), 1);
}

TEST(Condition, RecursiveWaitGivesUpEveryDepthAndRestoresIt) {
    Flag flag;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(oru_recursive_mutex_lock(&flag.mutex), 0);
    }
    // The waker gets the mutex only if the wait gives it up wholly.
    const Thread waker([&] { flag.raise(oru_cond_signal); });
    while (!flag.set) {
        EXPECT_EQ(oru_cond_wait_r(&flag.condition, &flag.mutex), 0);
    }
    EXPECT_EQ(oru_recursive_mutex_unlock(&flag.mutex), 0);
    EXPECT_EQ(oru_recursive_mutex_unlock(&flag.mutex), 0);
    EXPECT_EQ(in_other_thread([&] { return oru_mtx_trylock(&flag.mutex); }), 16);
    EXPECT_EQ(oru_recursive_mutex_unlock(&flag.mutex), 0);
    EXPECT_EQ(oru_recursive_mutex_unlock(&flag.mutex), 1);
}

TEST(Condition, RecursiveTimedWaitRunsOutOfTimeAndKeepsTheDepth) {
    oru_mtx_t mutex = ORU_THREAD_NAMED("");
    oru_cond_t condition = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_recursive_mutex_lock(&mutex), 0);
    EXPECT_EQ(oru_recursive_mutex_lock(&mutex), 0);
    int32_t rc = 0;
    EXPECT_GE(elapsed_ms([&] {
                  do {
                      rc = oru_cond_timedwait_r(&condition, &mutex, 30);
                  } while (rc == 0);
              }),
              30);
    EXPECT_EQ(rc, 110);
    EXPECT_EQ(oru_recursive_mutex_unlock(&mutex), 0);
    EXPECT_EQ(oru_recursive_mutex_unlock(&mutex), 0);
    EXPECT_EQ(oru_recursive_mutex_unlock(&mutex), 1);
}

TEST(Condition, DestroyedOnesGive22) {
    oru_mtx_t mutex = ORU_THREAD_NAMED("");
    oru_cond_t condition = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_cond_destroy(&condition), 0);
    EXPECT_EQ(oru_cond_destroy(&condition), 22);
    EXPECT_EQ(oru_cond_signal(&condition), 22);
    EXPECT_EQ(oru_cond_broadcast(&condition), 22);
    EXPECT_EQ(oru_mtx_lock(&mutex), 0);
    EXPECT_EQ(oru_cond_wait(&condition, &mutex), 22);
    EXPECT_EQ(oru_cond_timedwait_r(&condition, &mutex, 1), 22);
    EXPECT_EQ(oru_mtx_unlock(&mutex), 0);
    EXPECT_EQ(oru_mtx_destroy(&mutex), 0);
    EXPECT_EQ(oru_cond_init(&condition, nullptr), 0);
    EXPECT_EQ(oru_cond_wait(&condition, &mutex), 22);
    EXPECT_EQ(oru_cond_destroy(&condition), 0);
}

}  // namespace
}  // namespace oru::threads::test
