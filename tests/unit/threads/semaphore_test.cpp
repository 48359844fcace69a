#include <csignal>

#include "support.h"

namespace oru::threads::test {
namespace {

oru_sem_t g_static_semaphore = ORU_THREAD_NAMED("static semaphore");

int32_t value_of(oru_sem_t *semaphore) {
    int32_t value = -1;
    EXPECT_EQ(oru_sem_getvalue(semaphore, &value), 0);
    return value;
}

TEST(Semaphore, InitialisesStorageOfAnyContentsWithItsValue) {
    auto semaphore = garbage<oru_sem_t>();
    EXPECT_EQ(oru_sem_init(&semaphore, 3), 0);
    EXPECT_STREQ(semaphore.name, "");
    EXPECT_EQ(value_of(&semaphore), 3);
    EXPECT_EQ(oru_sem_wait(&semaphore), 0);
    EXPECT_EQ(value_of(&semaphore), 2);
    EXPECT_EQ(oru_sem_post(&semaphore), 0);
    EXPECT_EQ(value_of(&semaphore), 3);
    EXPECT_EQ(oru_sem_destroy(&semaphore), 0);
}

TEST(Semaphore, NullGives22) {
    oru_sem_t semaphore = ORU_THREAD_NAMED("");
    int32_t value = 7;
    EXPECT_EQ(oru_sem_init(nullptr, 0), 22);
    EXPECT_EQ(oru_sem_wait(nullptr), 22);
    EXPECT_EQ(oru_sem_post(nullptr), 22);
    EXPECT_EQ(oru_sem_getvalue(nullptr, &value), 22);
    EXPECT_EQ(value, 7);
    EXPECT_EQ(oru_sem_getvalue(&semaphore, nullptr), 22);
    EXPECT_EQ(oru_sem_destroy(nullptr), 22);
}

TEST(Semaphore, HighestValueIs2147483647) {
    oru_sem_t semaphore = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_sem_init(&semaphore, 2147483648u), 22);
    EXPECT_EQ(oru_sem_init(&semaphore, 2147483647u), 0);
    EXPECT_EQ(value_of(&semaphore), 2147483647);
    errno = 0;
    EXPECT_EQ(oru_sem_post(&semaphore), 75);
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(value_of(&semaphore), 2147483647);
}

TEST(Semaphore, ZeroedStaticOneHandsOverBetweenThreads) {
    int handed = 0;
    EXPECT_EQ(value_of(&g_static_semaphore), 0);
    const Thread giver([&] {
        handed = 42;
        EXPECT_EQ(oru_sem_post(&g_static_semaphore), 0);
    });
    EXPECT_EQ(oru_sem_wait(&g_static_semaphore), 0);
    EXPECT_EQ(handed, 42);
    EXPECT_EQ(value_of(&g_static_semaphore), 0);
}

TEST(Semaphore, EveryPostLetsOneWaiterGo) {
    oru_sem_t items = ORU_THREAD_NAMED("");
    oru_sem_t done = ORU_THREAD_NAMED("");
    const auto taker = [&] {
        for (int i = 0; i < 500; ++i) {
            EXPECT_EQ(oru_sem_wait(&items), 0);
            EXPECT_EQ(oru_sem_post(&done), 0);
        }
    };
    {
        const Thread a(taker), b(taker);
        for (int i = 0; i < 1000; ++i) {
            EXPECT_EQ(oru_sem_post(&items), 0);
        }
    }
    EXPECT_EQ(value_of(&items), 0);
    EXPECT_EQ(value_of(&done), 1000);
}

oru_sem_t g_posted_by_handler = ORU_THREAD_NAMED("");

TEST(Semaphore, WaitGoesOnAfterASignalHandler) {
    // Without SA_RESTART, so that the wait underneath ends with EINTR. The handler's own post
    // tells that it ran; only then the waiter may go.
    struct sigaction action {};
    struct sigaction before {};
    action.sa_handler = [](int) { oru_sem_post(&g_posted_by_handler); };
    ASSERT_EQ(sigaction(SIGUSR1, &action, &before), 0);
    oru_sem_t waited = ORU_THREAD_NAMED("");
    oru_sem_t started = ORU_THREAD_NAMED("");
    pthread_t waiter_thread{};
    bool released = false;
    {
        const Thread waiter([&] {
            waiter_thread = pthread_self();
            EXPECT_EQ(oru_sem_post(&started), 0);
            EXPECT_EQ(oru_sem_wait(&waited), 0);
            EXPECT_TRUE(released);
        });
        EXPECT_EQ(oru_sem_wait(&started), 0);
        EXPECT_EQ(oru_thread_sleep(20), 0);
        EXPECT_EQ(pthread_kill(waiter_thread, SIGUSR1), 0);
        EXPECT_EQ(oru_thread_sleep(20), 0);
        released = true;
        EXPECT_EQ(oru_sem_post(&waited), 0);
    }
    EXPECT_EQ(value_of(&g_posted_by_handler), 1);
    sigaction(SIGUSR1, &before, nullptr);
}

TEST(Semaphore, DestroyedOneGives22UntilInitialisedAgain) {
    oru_sem_t semaphore = ORU_THREAD_NAMED("");
    int32_t value = 7;
    EXPECT_EQ(oru_sem_destroy(&semaphore), 0);
    EXPECT_EQ(oru_sem_destroy(&semaphore), 22);
    EXPECT_EQ(oru_sem_wait(&semaphore), 22);
    EXPECT_EQ(oru_sem_post(&semaphore), 22);
    EXPECT_EQ(oru_sem_getvalue(&semaphore, &value), 22);
    EXPECT_EQ(value, 7);
    EXPECT_EQ(oru_sem_init(&semaphore, 1), 0);
    EXPECT_EQ(oru_sem_wait(&semaphore), 0);
    EXPECT_EQ(oru_sem_destroy(&semaphore), 0);
}

}  // namespace
}  // namespace oru::threads::test
