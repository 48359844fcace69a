#include "support.h"

namespace oru::threads::test {
namespace {

oru_rwlock_t g_static_lock = ORU_THREAD_NAMED("static lock");

int32_t try_read_elsewhere(oru_rwlock_t *lock) {
    return in_other_thread([&] {
        const int32_t rc = oru_rwlock_tryrdlock(lock);
        return rc == 0 ? oru_rwlock_unlock(lock) : rc;
    });
}

TEST(Rwlock, InitialisesStorageOfAnyContentsAndCutsTheName) {
    auto lock = garbage<oru_rwlock_t>();
    EXPECT_EQ(oru_rwlock_init(kLongName, &lock, nullptr), 0);
    EXPECT_STREQ(lock.name, kLongNameCut);
    EXPECT_EQ(oru_rwlock_wrlock(&lock), 0);
    EXPECT_EQ(oru_rwlock_unlock(&lock), 0);
    EXPECT_EQ(oru_rwlock_destroy(&lock), 0);
    EXPECT_EQ(oru_rwlock_init(nullptr, &lock, nullptr), 0);
    EXPECT_STREQ(lock.name, "");
    EXPECT_EQ(oru_rwlock_destroy(&lock), 0);
}

TEST(Rwlock, NullAndImpossibleArgumentsGive22) {
    oru_rwlock_t lock = ORU_THREAD_NAMED("");
    const int attribute = 0;
    EXPECT_EQ(oru_rwlock_init("x", nullptr, nullptr), 22);
    EXPECT_EQ(oru_rwlock_init("x", &lock, &attribute), 22);
    EXPECT_EQ(oru_rwlock_rdlock(nullptr), 22);
    EXPECT_EQ(oru_rwlock_wrlock(nullptr), 22);
    EXPECT_EQ(oru_rwlock_tryrdlock(nullptr), 22);
    EXPECT_EQ(oru_rwlock_unlock(nullptr), 22);
    EXPECT_EQ(oru_rwlock_destroy(nullptr), 22);
}

TEST(Rwlock, ManyReadersHoldItAtOnce) {
    oru_sem_t entered = ORU_THREAD_NAMED("");
    oru_sem_t leave = ORU_THREAD_NAMED("");
    const auto reader = [&] {
        EXPECT_EQ(oru_rwlock_rdlock(&g_static_lock), 0);
        EXPECT_EQ(oru_sem_post(&entered), 0);
        EXPECT_EQ(oru_sem_wait(&leave), 0);
        EXPECT_EQ(oru_rwlock_unlock(&g_static_lock), 0);
    };
    const Thread a(reader), b(reader), c(reader), d(reader);
    // Nobody leaves before all four are in, so this ends only if they share the lock.
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(oru_sem_wait(&entered), 0);
    }
    EXPECT_EQ(oru_rwlock_tryrdlock(&g_static_lock), 0);
    EXPECT_EQ(oru_rwlock_unlock(&g_static_lock), 0);
    EXPECT_EQ(oru_rwlock_destroy(&g_static_lock), 16);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(oru_sem_post(&leave), 0);
    }
}

TEST(Rwlock, ReaderReadsAgainAndUnlocksAsOften) {
    oru_rwlock_t lock = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_rwlock_rdlock(&lock), 0);
    EXPECT_EQ(oru_rwlock_rdlock(&lock), 0);
    EXPECT_EQ(oru_rwlock_unlock(&lock), 0);
    EXPECT_EQ(oru_rwlock_destroy(&lock), 16);
    EXPECT_EQ(oru_rwlock_unlock(&lock), 0);
    EXPECT_EQ(oru_rwlock_unlock(&lock), 1);
    EXPECT_EQ(oru_rwlock_destroy(&lock), 0);
}

TEST(Rwlock, TryReadUnderAWriterGives16) {
    oru_rwlock_t lock = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_rwlock_wrlock(&lock), 0);
    EXPECT_EQ(try_read_elsewhere(&lock), 16);
    EXPECT_EQ(oru_rwlock_tryrdlock(&lock), 16);
    EXPECT_EQ(oru_rwlock_unlock(&lock), 0);
    EXPECT_EQ(try_read_elsewhere(&lock), 0);
}

TEST(Rwlock, WriterThatLocksAgainGives35) {
    oru_rwlock_t lock = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_rwlock_wrlock(&lock), 0);
    EXPECT_EQ(oru_rwlock_wrlock(&lock), 35);
    EXPECT_EQ(oru_rwlock_rdlock(&lock), 35);
    EXPECT_EQ(oru_rwlock_unlock(&lock), 0);
}

TEST(Rwlock, UnlockOfWhatTheCallerDoesNotHoldGives1) {
    oru_rwlock_t lock = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_rwlock_unlock(&lock), 1);
    EXPECT_EQ(oru_rwlock_wrlock(&lock), 0);
    EXPECT_EQ(in_other_thread([&] { return oru_rwlock_unlock(&lock); }), 1);
    EXPECT_EQ(try_read_elsewhere(&lock), 16);
    EXPECT_EQ(oru_rwlock_unlock(&lock), 0);
}

TEST(Rwlock, WritersExcludeEachOtherAndReaders) {
    static oru_rwlock_t lock;  // zeroed, without a name
    int64_t first = 0;
    int64_t second = 0;
    const auto writer = [&] {
        for (int i = 0; i < 1000; ++i) {
            EXPECT_EQ(oru_rwlock_wrlock(&lock), 0);
            ++first;
            ++second;
            EXPECT_EQ(oru_rwlock_unlock(&lock), 0);
        }
    };
    const auto reader = [&] {
        for (int i = 0; i < 1000; ++i) {
            EXPECT_EQ(oru_rwlock_rdlock(&lock), 0);
            EXPECT_EQ(first, second);
            EXPECT_EQ(oru_rwlock_unlock(&lock), 0);
        }
    };
    { const Thread a(writer), b(reader), c(writer), d(reader); }
    EXPECT_EQ(first, 2000);
    EXPECT_EQ(second, 2000);
}

TEST(Rwlock, DestroyedOneGives22UntilInitialisedAgain) {
    oru_rwlock_t lock = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_rwlock_wrlock(&lock), 0);
    EXPECT_EQ(oru_rwlock_destroy(&lock), 16);
    EXPECT_EQ(oru_rwlock_unlock(&lock), 0);
    EXPECT_EQ(oru_rwlock_destroy(&lock), 0);
    EXPECT_EQ(oru_rwlock_rdlock(&lock), 22);
    EXPECT_EQ(oru_rwlock_wrlock(&lock), 22);
    EXPECT_EQ(oru_rwlock_tryrdlock(&lock), 22);
    EXPECT_EQ(oru_rwlock_unlock(&lock), 22);
    EXPECT_EQ(oru_rwlock_destroy(&lock), 22);
    EXPECT_EQ(oru_rwlock_init("again", &lock, nullptr), 0);
    EXPECT_EQ(oru_rwlock_wrlock(&lock), 0);
    EXPECT_EQ(oru_rwlock_unlock(&lock), 0);
    EXPECT_EQ(oru_rwlock_destroy(&lock), 0);
}

}  // namespace
}  // namespace oru::threads::test
