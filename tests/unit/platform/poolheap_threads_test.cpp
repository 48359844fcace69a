#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <atomic>
#include <thread>
#include <vector>

#include "nothing_live.h"

namespace {

// The first of 200 tags that no test has used before, so that their numbers start at 0.
uint32_t fresh_tags() {
    static uint32_t next = 0x2a50000;
    return next += 200;
}

poolheap_stats_t stats_of(uint32_t tag) {
    poolheap_stats_t stats{};
    poolheap_tag_stats(tag, &stats);
    return stats;
}

struct PoolheapThreads : NothingLive {
    const uint32_t tag = fresh_tags();
};

}  // namespace

TEST_F(PoolheapThreads, CountsOfEndedThreadsAreKeptExactly) {
    std::vector<std::thread> threads;
    std::vector<void *> kept(4);
    for (uint32_t number = 0; number < 4; number++) {
        threads.emplace_back([this, number, &kept] {
            for (uint32_t i = 0; i < 10000; i++) {
                void *block = ph_malloc_named(tag + i % 3, i % 100);
                if (i % 10 == 0) {
                    block = ph_realloc_named(tag + i % 3, block, 200);
                }
                ph_free_named(block);
            }
            kept[number] = ph_malloc_named(tag + 3, 10);
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    uint64_t total = 0;
    for (uint32_t i = 0; i < 3; i++) {
        EXPECT_EQ(stats_of(tag + i).live_blocks, 0u);
        EXPECT_EQ(stats_of(tag + i).live_bytes, 0u);
        total += stats_of(tag + i).total_blocks;
    }
    EXPECT_EQ(total, 40000u);
    EXPECT_EQ(stats_of(tag + 3).live_blocks, 4u);
    EXPECT_EQ(stats_of(tag + 3).live_bytes, 40u);
    for (void *block : kept) {
        ph_free_named(block);
    }
    EXPECT_EQ(stats_of(tag + 3).live_blocks, 0u);
}

TEST_F(PoolheapThreads, BlocksFreedByAnotherThreadAreCountedDown) {
    std::vector<void *> blocks(1000);
    std::thread([&] {
        for (void *&block : blocks) {
            block = ph_malloc_named(tag + 4, 64);
        }
    }).join();
    EXPECT_EQ(stats_of(tag + 4).live_bytes, 64000u);
    std::thread([&] {
        for (void *block : blocks) {
            ph_free_named(block);
        }
    }).join();
    EXPECT_EQ(stats_of(tag + 4).live_bytes, 0u);
    EXPECT_EQ(stats_of(tag + 4).total_blocks, 1000u);
}

TEST_F(PoolheapThreads, PeakOfSeveralThreadsIsWithinTheSlack) {
    constexpr uint64_t kThreads = 4;
    constexpr uint64_t kBytes = 1000000;
    std::atomic<unsigned> ready{0};
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; i++) {
        threads.emplace_back([&] {
            std::vector<void *> blocks;
            for (uint64_t taken = 0; taken < kBytes; taken += 1000) {
                blocks.push_back(ph_malloc_named(tag + 5, 1000));
            }
            ready++;
            while (ready < kThreads) {
                std::this_thread::yield();
            }
            for (void *block : blocks) {
                ph_free_named(block);
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    const uint64_t peak = stats_of(tag + 5).peak_bytes;
    EXPECT_GE(peak, kThreads * (kBytes - POOLHEAP_PEAK_SLACK));
    EXPECT_LE(peak, kThreads * (kBytes + POOLHEAP_PEAK_SLACK));
}

TEST_F(PoolheapThreads, TagsFirstUsedBySeveralThreadsAtOnceGetOneRow) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; t++) {
        threads.emplace_back([this] {
            for (uint32_t i = 0; i < 100; i++) {
                ph_free_named(ph_malloc_named(tag + 100 + i, 1));
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    for (uint32_t i = 0; i < 100; i++) {
        EXPECT_EQ(stats_of(tag + 100 + i).total_blocks, 4u);
    }
}

TEST_F(PoolheapThreads, ReportMayBeMadeWhileOthersWork) {
    std::atomic<bool> done{false};
    std::thread worker([&] {
        while (!done) {
            ph_free_named(ph_malloc_named(tag + 6, 100));
        }
    });
    FILE *out = fopen("/dev/null", "w");
    for (int i = 0; i < 50; i++) {
        poolheap_report(out);
        poolheap_init(0x2900000, nullptr);
    }
    done = true;
    worker.join();
    fclose(out);
}

TEST_F(PoolheapThreads, FailureHookCountsAllThreads) {
    poolheap_fail_nth(500, 0);
    std::atomic<int> failed{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; t++) {
        threads.emplace_back([&] {
            for (int i = 0; i < 200; i++) {
                void *block = ph_malloc_named(tag + 7, 8);
                failed += block == nullptr ? 1 : 0;
                ph_free_named(block);
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(failed, 1);
    EXPECT_EQ(poolheap_fail_calls(), 800u);
}
