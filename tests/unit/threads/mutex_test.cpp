#include "support.h"

namespace oru::threads::test {
namespace {

oru_mtx_t g_static_mutex = ORU_THREAD_NAMED("static mutex");
oru_mtx_t g_static_recursive = ORU_THREAD_NAMED("static recursive");

// Adds up a plain number in several threads; only a lock that excludes gets it right.
int64_t count_under(oru_mtx_t *mutex, int32_t (*lock)(oru_mtx_t *),
                    int32_t (*unlock)(oru_mtx_t *)) {
    int64_t count = 0;
    const auto body = [&] {
        for (int i = 0; i < 2000; ++i) {
            EXPECT_EQ(lock(mutex), 0);
            ++count;
            EXPECT_EQ(unlock(mutex), 0);
        }
    };
    { const Thread a(body), b(body), c(body), d(body); }
    return count;
}

TEST(Mutex, InitialisesStorageOfAnyContents) {
    auto mutex = garbage<oru_mtx_t>();
    EXPECT_EQ(oru_mtx_init("a mutex", &mutex, nullptr), 0);
    EXPECT_STREQ(mutex.name, "a mutex");
    EXPECT_EQ(oru_mtx_lock(&mutex), 0);
    EXPECT_EQ(oru_mtx_unlock(&mutex), 0);
    EXPECT_EQ(oru_mtx_destroy(&mutex), 0);
}

TEST(Mutex, NameIsCutAt31Bytes) {
    auto mutex = garbage<oru_mtx_t>();
    EXPECT_EQ(oru_mtx_init(kLongName, &mutex, nullptr), 0);
    EXPECT_STREQ(mutex.name, kLongNameCut);
    EXPECT_EQ(oru_mtx_destroy(&mutex), 0);
}

TEST(Mutex, NullNameIsNone) {
    auto mutex = garbage<oru_mtx_t>();
    EXPECT_EQ(oru_mtx_init(nullptr, &mutex, nullptr), 0);
    EXPECT_STREQ(mutex.name, "");
    EXPECT_EQ(oru_mtx_destroy(&mutex), 0);
}

TEST(Mutex, NullAndImpossibleArgumentsGive22) {
    oru_mtx_t mutex = ORU_THREAD_NAMED("");
    const int attribute = 0;
    EXPECT_EQ(oru_mtx_init("x", nullptr, nullptr), 22);
    EXPECT_EQ(oru_mtx_init("x", &mutex, &attribute), 22);
    EXPECT_EQ(oru_mtx_lock(nullptr), 22);
    EXPECT_EQ(oru_mtx_trylock(nullptr), 22);
    EXPECT_EQ(oru_mtx_unlock(nullptr), 22);
    EXPECT_EQ(oru_mtx_destroy(nullptr), 22);
}

TEST(Mutex, ZeroedStaticOneExcludesWithoutInitialiser) {
    EXPECT_EQ(count_under(&g_static_mutex, oru_mtx_lock, oru_mtx_unlock), 8000);
    EXPECT_STREQ(g_static_mutex.name, "static mutex");
}

TEST(Mutex, TrylockOfATakenOneGives16) {
    oru_mtx_t mutex = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_mtx_trylock(&mutex), 0);
    EXPECT_EQ(oru_mtx_trylock(&mutex), 16);
    EXPECT_EQ(in_other_thread([&] { return oru_mtx_trylock(&mutex); }), 16);
    EXPECT_EQ(oru_mtx_unlock(&mutex), 0);
    EXPECT_EQ(in_other_thread([&] {
                  const int32_t rc = oru_mtx_trylock(&mutex);
                  EXPECT_EQ(oru_mtx_unlock(&mutex), 0);
                  return rc;
              }),
              0);
}

TEST(Mutex, SecondLockOfTheHolderGives35) {
    oru_mtx_t mutex = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_mtx_lock(&mutex), 0);
    EXPECT_EQ(oru_mtx_lock(&mutex), 35);
    EXPECT_EQ(oru_mtx_unlock(&mutex), 0);
}

TEST(Mutex, UnlockOfANotHeldOneGives1) {
    oru_mtx_t mutex = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_mtx_unlock(&mutex), 1);
    EXPECT_EQ(oru_mtx_lock(&mutex), 0);
    EXPECT_EQ(in_other_thread([&] { return oru_mtx_unlock(&mutex); }), 1);
    EXPECT_EQ(in_other_thread([&] { return oru_mtx_trylock(&mutex); }), 16);
    EXPECT_EQ(oru_mtx_unlock(&mutex), 0);
}

TEST(Mutex, HeldOneIsNotDestroyed) {
    oru_mtx_t mutex = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_mtx_lock(&mutex), 0);
    EXPECT_EQ(oru_mtx_destroy(&mutex), 16);
    EXPECT_EQ(in_other_thread([&] { return oru_mtx_destroy(&mutex); }), 16);
    EXPECT_EQ(oru_mtx_unlock(&mutex), 0);
    EXPECT_EQ(oru_mtx_destroy(&mutex), 0);
}

TEST(Mutex, DestroyedOneGives22UntilInitialisedAgain) {
    oru_mtx_t mutex = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_mtx_destroy(&mutex), 0);
    EXPECT_EQ(oru_mtx_lock(&mutex), 22);
    EXPECT_EQ(oru_mtx_trylock(&mutex), 22);
    EXPECT_EQ(oru_mtx_unlock(&mutex), 22);
    EXPECT_EQ(oru_mtx_destroy(&mutex), 22);
    EXPECT_EQ(oru_recursive_mutex_lock(&mutex), 22);
    EXPECT_EQ(oru_mtx_init("again", &mutex, nullptr), 0);
    EXPECT_EQ(oru_mtx_lock(&mutex), 0);
    EXPECT_EQ(oru_mtx_unlock(&mutex), 0);
    EXPECT_EQ(oru_mtx_destroy(&mutex), 0);
}

TEST(RecursiveMutex, InitialisesStorageOfAnyContentsAndCutsTheName) {
    auto mutex = garbage<oru_mtx_t>();
    EXPECT_EQ(oru_recursive_mutex_init(kLongName, &mutex), 0);
    EXPECT_STREQ(mutex.name, kLongNameCut);
    EXPECT_EQ(oru_recursive_mutex_lock(&mutex), 0);
    EXPECT_EQ(oru_recursive_mutex_unlock(&mutex), 0);
    EXPECT_EQ(oru_recursive_mutex_destroy(&mutex), 0);
}

TEST(RecursiveMutex, NullGives22) {
    EXPECT_EQ(oru_recursive_mutex_init("x", nullptr), 22);
    EXPECT_EQ(oru_recursive_mutex_lock(nullptr), 22);
    EXPECT_EQ(oru_recursive_mutex_unlock(nullptr), 22);
    EXPECT_EQ(oru_recursive_mutex_destroy(nullptr), 22);
}

TEST(RecursiveMutex, ZeroedStaticOneExcludesWithoutInitialiser) {
    EXPECT_EQ(
        count_under(&g_static_recursive, oru_recursive_mutex_lock, oru_recursive_mutex_unlock),
        8000);
}

TEST(RecursiveMutex, IsFreeAfterAsManyUnlocksAsLocks) {
    oru_mtx_t mutex = ORU_THREAD_NAMED("");
    const auto try_elsewhere = [&] {
        return in_other_thread([&] {
            const int32_t rc = oru_mtx_trylock(&mutex);
            return rc == 0 ? oru_mtx_unlock(&mutex) : rc;
        });
    };
    EXPECT_EQ(oru_recursive_mutex_lock(&mutex), 0);
    EXPECT_EQ(oru_recursive_mutex_lock(&mutex), 0);
    EXPECT_EQ(oru_recursive_mutex_lock(&mutex), 0);
    EXPECT_EQ(oru_recursive_mutex_unlock(&mutex), 0);
    EXPECT_EQ(oru_recursive_mutex_unlock(&mutex), 0);
    EXPECT_EQ(try_elsewhere(), 16);
    EXPECT_EQ(oru_recursive_mutex_destroy(&mutex), 16);
    EXPECT_EQ(oru_recursive_mutex_unlock(&mutex), 0);
    EXPECT_EQ(try_elsewhere(), 0);
    EXPECT_EQ(oru_recursive_mutex_unlock(&mutex), 1);
    EXPECT_EQ(oru_recursive_mutex_destroy(&mutex), 0);
    EXPECT_EQ(oru_recursive_mutex_lock(&mutex), 22);
    EXPECT_EQ(oru_recursive_mutex_unlock(&mutex), 22);
    EXPECT_EQ(oru_recursive_mutex_destroy(&mutex), 22);
}

TEST(RecursiveMutex, UnlockByAnotherThreadGives1) {
    oru_mtx_t mutex = ORU_THREAD_NAMED("");
    EXPECT_EQ(oru_recursive_mutex_lock(&mutex), 0);
    EXPECT_EQ(in_other_thread([&] { return oru_recursive_mutex_unlock(&mutex); }), 1);
    EXPECT_EQ(oru_recursive_mutex_unlock(&mutex), 0);
}

}  // namespace
}  // namespace oru::threads::test
