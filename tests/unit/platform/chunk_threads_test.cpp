#include <gtest/gtest.h>
#include <limits.h>
#include <oruplatform/chunk.h>
#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "nothing_live.h"

namespace {

constexpr uint32_t kTag = 0x2a60001;

chunk_stats_t stats_of(void *pool) {
    chunk_stats_t stats{};
    EXPECT_EQ(chunk_pool_stats(pool, &stats), 0);
    return stats;
}

void run_threads(int count, const std::function<void(int)> &body) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; i++) {
        threads.emplace_back(body, i);
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
}

// Hands elements from one thread to another.
class Channel {
  public:
    void put(void *element) {
        const std::lock_guard locked(mutex_);
        elements_.push_back(element);
        ready_.notify_one();
    }
    void *get() {
        std::unique_lock locked(mutex_);
        ready_.wait(locked, [&] { return !elements_.empty(); });
        void *element = elements_.back();
        elements_.pop_back();
        return element;
    }

  private:
    std::mutex mutex_;
    std::condition_variable ready_;
    std::vector<void *> elements_;
};

using ChunkThreads = NothingLive;

}  // namespace

TEST_F(ChunkThreads, ElementsAreNeverSharedAndCountsAreExact) {
    void *pool = chunk_create_poolheap(48, 100, 0x101, 1, kTag);
    run_threads(4, [&](int number) {
        std::vector<unsigned char *> mine;
        for (int round = 0; round < 50; round++) {
            for (int i = 0; i < 200; i++) {
                mine.push_back(static_cast<unsigned char *>(chunk_malloc(pool)));
                memset(mine.back(), number, 48);
            }
            while (mine.size() > 100u * static_cast<unsigned>(round % 2)) {
                ASSERT_EQ(mine.back()[0], number);
                ASSERT_EQ(mine.back()[47], number);
                ASSERT_NE(chunk_free(pool, mine.back()), 0);
                mine.pop_back();
            }
        }
        for (unsigned char *element : mine) {
            ASSERT_NE(chunk_free(pool, element), 0);
        }
    });
    EXPECT_EQ(stats_of(pool).live, 0u);
    EXPECT_EQ(stats_of(pool).total_takes, 4u * 50u * 200u);
}

TEST_F(ChunkThreads, ElementsMayBeReturnedByAnotherThread) {
    void *pool = chunk_create_poolheap(48, 100, 0x101, 1, kTag);
    Channel channel;
    constexpr int kCount = 20000;
    std::thread taker([&] {
        for (int i = 0; i < kCount; i++) {
            void *element = chunk_malloc(pool);
            memset(element, 1, 48);
            channel.put(element);
        }
    });
    for (int i = 0; i < kCount; i++) {
        void *element = channel.get();
        ASSERT_EQ(static_cast<char *>(element)[47], 1);
        ASSERT_NE(chunk_free(pool, element), 0);
    }
    taker.join();
    EXPECT_EQ(stats_of(pool).live, 0u);
    EXPECT_EQ(stats_of(pool).total_takes, static_cast<uint64_t>(kCount));
}

TEST_F(ChunkThreads, MagazinesOfEndingThreadsGoBack) {
    void *pool = chunk_create_poolheap(48, 64, 0x101, 1, kTag);
    for (int i = 0; i < 200; i++) {
        std::thread([&] {
            void *a = chunk_malloc(pool);
            void *b = chunk_malloc(pool);
            EXPECT_NE(chunk_free(pool, a), 0);
            EXPECT_NE(chunk_free(pool, b), 0);
        }).join();
    }
    EXPECT_EQ(stats_of(pool).slabs, 1u);
    EXPECT_EQ(stats_of(pool).total_takes, 400u);
}

TEST_F(ChunkThreads, ElementsOutliveTheThreadThatTookThem) {
    void *pool = chunk_create_poolheap(48, 64, 0x101, 1, kTag);
    void *element = nullptr;
    std::thread([&] { element = chunk_malloc(pool); }).join();
    EXPECT_EQ(stats_of(pool).live, 1u);
    EXPECT_NE(chunk_free(pool, element), 0);
}

TEST_F(ChunkThreads, CapHoldsForAllThreadsTogether) {
    void *pool = chunk_create_poolheap(48, 50, 0x101 | CHUNK_FLAG_MAX_SLABS(2), 1, kTag);
    std::mutex mutex;
    std::vector<void *> taken;
    const auto take_all = [&](int) {
        while (void *element = chunk_malloc(pool)) {
            const std::lock_guard locked(mutex);
            taken.push_back(element);
        }
    };
    run_threads(4, take_all);
    take_all(0);
    EXPECT_EQ(taken.size(), 100u);
    EXPECT_EQ(stats_of(pool).live, 100u);
    EXPECT_EQ(stats_of(pool).slabs, 2u);
    for (void *element : taken) {
        EXPECT_NE(chunk_free(pool, element), 0);
    }
}

TEST_F(ChunkThreads, PoolsMadeSideBySideWork) {
    run_threads(4, [&](int) {
        for (int i = 0; i < 40; i++) {
            void *pool = chunk_create_poolheap(32, 10, 0x101, 1, kTag);
            void *element = chunk_malloc(pool);
            memset(element, 3, 32);
            ASSERT_NE(chunk_free(pool, element), 0);
        }
    });
}

TEST_F(ChunkThreads, CleanUpFunctionsOfAThreadMayStillUsePools) {
    static void *pool;
    pool = chunk_create_poolheap(48, 64, 0x101, 1, kTag);
    pthread_key_t key;
    ASSERT_EQ(pthread_key_create(&key,
                                 [](void *element) {
                                     EXPECT_NE(chunk_free(pool, element), 0);
                                     EXPECT_NE(chunk_free(pool, chunk_malloc(pool)), 0);
                                 }),
              0);
    for (int i = 0; i < 100; i++) {
        std::thread([&] { pthread_setspecific(key, chunk_malloc(pool)); }).join();
    }
    pthread_key_delete(key);
    EXPECT_EQ(stats_of(pool).live, 0u);
    EXPECT_EQ(stats_of(pool).slabs, 1u);
}

// ThreadSanitizer itself is gone from the thread in the last round.
#if !defined(__SANITIZE_THREAD__)

namespace {

// Used by the clean-up function below, which has no other way to know them.
void *g_pool;
pthread_key_t g_key;
std::atomic<int> g_rounds;

// Comes again in every round that the C library makes, in the last one behind the layer's own
// clean-up, which then keeps nothing for the thread any more.
void use_all_rounds(void *element) {
    g_rounds++;
    EXPECT_NE(chunk_free(g_pool, element), 0);
    EXPECT_NE(chunk_free(g_pool, chunk_malloc(g_pool)), 0);
    EXPECT_EQ(ph_free_named(ph_malloc_named(kTag, 100)), 0);
    tracelet_place_push("file", 1, "element");
    tracelet_place_pop();
    if (g_rounds < PTHREAD_DESTRUCTOR_ITERATIONS) {
        pthread_setspecific(g_key, chunk_malloc(g_pool));
    }
}

}  // namespace

TEST_F(ChunkThreads, LastRoundOfCleanUpLosesNothing) {
    // This thread keeps half a magazine, 64 elements; the others share the rest of the slab.
    g_pool = chunk_create_poolheap(48, 128, 0x101, 1, kTag);
    EXPECT_NE(chunk_free(g_pool, chunk_malloc(g_pool)), 0);
    ASSERT_EQ(pthread_key_create(&g_key, use_all_rounds), 0);
    for (int i = 0; i < 50; i++) {
        g_rounds = 0;
        std::thread([] { pthread_setspecific(g_key, chunk_malloc(g_pool)); }).join();
        EXPECT_EQ(g_rounds, PTHREAD_DESTRUCTOR_ITERATIONS);
    }
    pthread_key_delete(g_key);
    EXPECT_EQ(stats_of(g_pool).live, 0u);
    EXPECT_EQ(stats_of(g_pool).slabs, 1u);
    EXPECT_EQ(stats_of(g_pool).total_takes, 1u + 50u * 2u * PTHREAD_DESTRUCTOR_ITERATIONS);
}

#endif

TEST_F(ChunkThreads, StatisticsMayBeReadWhileOthersWork) {
    void *pool = chunk_create_poolheap(48, 64, 0x101, 1, kTag);
    std::atomic<bool> done{false};
    std::thread reader([&] {
        while (!done) {
            (void)stats_of(pool);
        }
    });
    run_threads(2, [&](int) {
        for (int i = 0; i < 20000; i++) {
            ASSERT_NE(chunk_free(pool, chunk_malloc(pool)), 0);
        }
    });
    done = true;
    reader.join();
    EXPECT_EQ(stats_of(pool).total_takes, 40000u);
}
