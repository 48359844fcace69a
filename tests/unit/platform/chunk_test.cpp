#include <gtest/gtest.h>
#include <oruplatform/chunk.h>
#include <oruplatform/poolheap.h>

#include <cstring>
#include <iterator>
#include <set>
#include <vector>

#include "nothing_live.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#include <unistd.h>
#endif

namespace {

constexpr uint32_t kTag = 0x2a60000;
constexpr uintptr_t kUsual = 0x101;

void *make_pool(size_t size, intptr_t count, uintptr_t flags = kUsual) {
    return chunk_create_poolheap(size, count, flags, 1, kTag);
}

chunk_stats_t stats_of(void *pool) {
    chunk_stats_t stats{};
    EXPECT_EQ(chunk_pool_stats(pool, &stats), 0);
    return stats;
}

std::vector<void *> take(void *pool, int count) {
    std::vector<void *> elements;
    for (int i = 0; i < count; i++) {
        elements.push_back(chunk_malloc(pool));
    }
    return elements;
}

void give_back(void *pool, const std::vector<void *> &elements) {
    for (void *element : elements) {
        EXPECT_NE(chunk_free(pool, element), 0);
    }
}

using Chunk = NothingLive;

}  // namespace

TEST_F(Chunk, ElementsAreApartAlignedAndWhole) {
    for (size_t size : {1u, 8u, 16u, 40u, 48u, 72u, 256u, 5000u, 100000u}) {
        void *pool = make_pool(size, 7);
        ASSERT_NE(pool, nullptr);
        const std::vector<void *> elements = take(pool, 50);
        for (size_t i = 0; i < elements.size(); i++) {
            ASSERT_NE(elements[i], nullptr);
            EXPECT_EQ(reinterpret_cast<uintptr_t>(elements[i]) % 16, 0u);
            memset(elements[i], static_cast<int>(i), size);
        }
        for (size_t i = 0; i < elements.size(); i++) {
            const auto *bytes = static_cast<unsigned char *>(elements[i]);
            EXPECT_EQ(bytes[0], i);
            EXPECT_EQ(bytes[size - 1], i);
        }
        EXPECT_EQ(std::set<void *>(elements.begin(), elements.end()).size(), 50u);
        give_back(pool, elements);
    }
}

TEST_F(Chunk, GrowsBySlabsOfItsCount) {
    void *pool = make_pool(48, 10);
    EXPECT_EQ(stats_of(pool).slabs, 0u);
    std::vector<void *> elements = take(pool, 10);
    EXPECT_EQ(stats_of(pool).slabs, 1u);
    elements.push_back(chunk_malloc(pool));
    EXPECT_EQ(stats_of(pool).slabs, 2u);
    give_back(pool, elements);
    give_back(pool, take(pool, 20));
    EXPECT_EQ(stats_of(pool).slabs, 2u);
}

TEST_F(Chunk, CapEndsItsGrowth) {
    void *pool = make_pool(48, 5, kUsual | CHUNK_FLAG_MAX_SLABS(3));
    const std::vector<void *> elements = take(pool, 15);
    EXPECT_NE(elements.back(), nullptr);
    EXPECT_EQ(chunk_malloc(pool), nullptr);
    EXPECT_EQ(chunk_malloc(pool), nullptr);
    give_back(pool, {elements[3]});
    void *again = chunk_malloc(pool);
    EXPECT_EQ(again, elements[3]);
    EXPECT_EQ(chunk_malloc(pool), nullptr);
    EXPECT_EQ(stats_of(pool).slabs, 3u);
    EXPECT_EQ(stats_of(pool).max_slabs, 3u);
    give_back(pool, elements);
}

TEST_F(Chunk, PoolThatMustNotGrowIsOneSlab) {
    void *pool = make_pool(48, 4, CHUNK_FLAG_THREADED);
    const std::vector<void *> elements = take(pool, 4);
    EXPECT_NE(elements.back(), nullptr);
    EXPECT_EQ(chunk_malloc(pool), nullptr);
    give_back(pool, elements);
}

TEST_F(Chunk, PreallocatedPoolHasItsFirstSlab) {
    void *pool = make_pool(48, 4000, kUsual | CHUNK_FLAG_PREALLOCATE);
    EXPECT_EQ(stats_of(pool).slabs, 1u);
    give_back(pool, take(pool, 4001));
    EXPECT_EQ(stats_of(pool).slabs, 2u);
}

TEST_F(Chunk, CapOfOneElementWorks) {
    void *pool = make_pool(48, 1, kUsual | CHUNK_FLAG_MAX_SLABS(1));
    for (int i = 0; i < 3; i++) {
        void *element = chunk_malloc(pool);
        ASSERT_NE(element, nullptr);
        EXPECT_EQ(chunk_malloc(pool), nullptr);
        EXPECT_NE(chunk_free(pool, element), 0);
    }
}

TEST_F(Chunk, StatisticsAreExact) {
    void *pool = make_pool(48, 64);
    chunk_stats_t stats = stats_of(pool);
    EXPECT_EQ(stats.element_size, 48u);
    EXPECT_EQ(stats.slab_count, 64u);
    EXPECT_EQ(stats.tag, kTag);
    const std::vector<void *> elements = take(pool, 300);
    EXPECT_EQ(stats_of(pool).live, 300u);
    EXPECT_EQ(stats_of(pool).peak, 300u);
    give_back(pool, elements);
    give_back(pool, take(pool, 10));
    stats = stats_of(pool);
    EXPECT_EQ(stats.live, 0u);
    EXPECT_EQ(stats.total_takes, 310u);
    EXPECT_GE(stats.peak, 300u - CHUNK_MAGAZINE_SIZE / 2);
    EXPECT_LE(stats.peak, 300u);
}

TEST_F(Chunk, LiveElementsOfAllPoolsAreSummed) {
    const uint64_t before = chunk_live_elements();
    void *a = make_pool(16, 4);
    void *b = make_pool(32, 4);
    void *x = chunk_malloc(a);
    void *y = chunk_malloc(b);
    EXPECT_EQ(chunk_live_elements(), before + 2);
    chunk_free(a, x);
    chunk_free(b, y);
    EXPECT_EQ(chunk_live_elements(), before);
}

TEST_F(Chunk, SecondReturnIsRefusedAndChangesNothing) {
    void *pool = make_pool(48, 10);
    const std::vector<void *> elements = take(pool, 3);
    EXPECT_NE(chunk_free(pool, elements[1]), 0);
    EXPECT_EQ(chunk_free(pool, elements[1]), 0);
    EXPECT_EQ(stats_of(pool).live, 2u);
    EXPECT_EQ(stats_of(pool).refused, 1u);
    EXPECT_EQ(chunk_malloc(pool), elements[1]);
    void *next = chunk_malloc(pool);
    EXPECT_NE(next, elements[1]);
    give_back(pool, elements);
    give_back(pool, {next});
    EXPECT_EQ(stats_of(pool).live, 0u);
}

TEST_F(Chunk, SecondReturnIsRefusedWhereverTheElementWaits) {
    void *pool = make_pool(48, 1000);
    const std::vector<void *> elements = take(pool, 1000);
    give_back(pool, elements);
    for (void *element : elements) {
        EXPECT_EQ(chunk_free(pool, element), 0);
    }
    EXPECT_EQ(stats_of(pool).refused, 1000u);
    EXPECT_EQ(stats_of(pool).live, 0u);
}

TEST_F(Chunk, WhatIsNotThePoolsIsRefused) {
    void *pool = make_pool(48, 10);
    void *other = make_pool(48, 10);
    auto *mine = static_cast<char *>(chunk_malloc(pool));
    void *others = chunk_malloc(other);
    int local = 0;
    static int global = 0;
    void *heap = ph_malloc_named(kTag, 48);
    const uint64_t live = stats_of(pool).live;
    EXPECT_EQ(chunk_free(pool, nullptr), 0);
    EXPECT_EQ(chunk_free(pool, others), 0);
    EXPECT_EQ(chunk_free(pool, &local), 0);
    EXPECT_EQ(chunk_free(pool, &global), 0);
    EXPECT_EQ(chunk_free(pool, heap), 0);
    EXPECT_EQ(chunk_free(pool, pool), 0);
    EXPECT_EQ(chunk_free(pool, reinterpret_cast<void *>(uintptr_t{1})), 0);
    EXPECT_EQ(chunk_free(pool, reinterpret_cast<void *>(UINTPTR_MAX)), 0);
    EXPECT_EQ(chunk_free(nullptr, mine), 0);
    EXPECT_EQ(stats_of(pool).live, live);
    EXPECT_EQ(stats_of(pool).refused, 8u);
    EXPECT_NE(chunk_free(pool, mine), 0);
    EXPECT_NE(chunk_free(other, others), 0);
    ph_free_named(heap);
}

TEST_F(Chunk, OnlyTheFirstByteOfAnElementIsItsAddress) {
    for (size_t size : {1u, 48u, 200u}) {
        void *pool = make_pool(size, 100);
        const std::vector<void *> elements = take(pool, 100);
        auto *element = static_cast<char *>(elements[37]);
        for (int offset = 1; offset < 16; offset++) {
            EXPECT_EQ(chunk_free(pool, element + offset), 0);
            EXPECT_EQ(chunk_free(pool, element - offset), 0);
        }
        if (size > 16) {
            EXPECT_EQ(chunk_free(pool, element + 16), 0);
        }
        give_back(pool, elements);
    }
}

TEST_F(Chunk, ElementsThatWereNeverHandedOutAreRefused) {
    void *pool = make_pool(48, 1000);
    auto *element = static_cast<char *>(chunk_malloc(pool));
    for (ptrdiff_t offset = 16; offset < 200000; offset += 16) {
        ASSERT_EQ(chunk_free(pool, element + offset), 0);
        ASSERT_EQ(chunk_free(pool, element - offset), 0);
    }
    EXPECT_NE(chunk_free(pool, element), 0);
}

TEST_F(Chunk, EveryElementOfLargeSlabsIsKnown) {
    void *pool = make_pool(4096, 100);
    const std::vector<void *> elements = take(pool, 1000);
    for (size_t i = 0; i < elements.size(); i += 7) {
        EXPECT_EQ(chunk_free(pool, static_cast<char *>(elements[i]) + 2048), 0);
    }
    give_back(pool, elements);
}

TEST_F(Chunk, PoolsBeyondTheDirectOnesWorkAlike) {
    std::vector<void *> pools;
    for (int i = 0; i < 200; i++) {
        pools.push_back(make_pool(32, 3));
    }
    std::vector<void *> elements;
    for (void *pool : pools) {
        elements.push_back(chunk_malloc(pool));
        elements.push_back(chunk_malloc(pool));
    }
    for (size_t i = 0; i < elements.size(); i++) {
        EXPECT_EQ(chunk_free(pools[(i / 2 + 1) % pools.size()], elements[i]), 0);
        EXPECT_NE(chunk_free(pools[i / 2], elements[i]), 0);
    }
    for (void *pool : pools) {
        EXPECT_EQ(stats_of(pool).live, 0u);
        EXPECT_EQ(stats_of(pool).total_takes, 2u);
    }
}

TEST_F(Chunk, BadSizesAndCountsGiveNoPool) {
    EXPECT_EQ(make_pool(0, 10), nullptr);
    EXPECT_EQ(make_pool(CHUNK_MAX_ELEMENT_SIZE + 1, 10), nullptr);
    EXPECT_NE(make_pool(CHUNK_MAX_ELEMENT_SIZE, 1), nullptr);
    EXPECT_EQ(make_pool(48, 0), nullptr);
    EXPECT_EQ(make_pool(48, -1), nullptr);
    EXPECT_EQ(make_pool(48, INTPTR_MAX), nullptr);
    EXPECT_EQ(make_pool(SIZE_MAX, 1), nullptr);
}

TEST_F(Chunk, NullArgumentsAreRefused) {
    void *pool = make_pool(48, 1);
    chunk_stats_t stats{};
    EXPECT_EQ(chunk_malloc(nullptr), nullptr);
    EXPECT_EQ(chunk_pool_stats(nullptr, &stats), 22);
    EXPECT_EQ(chunk_pool_stats(pool, nullptr), 22);
}

#if defined(__SANITIZE_ADDRESS__)

TEST_F(Chunk, CheckedBuildSeesUseOfFreeElementsAndOverflow) {
    void *pool = make_pool(40, 10);
    auto *element = static_cast<volatile char *>(chunk_malloc(pool));
    element[39] = 1;
    EXPECT_DEATH(element[40] = 1, "use-after-poison");
    EXPECT_NE(chunk_free(pool, const_cast<char *>(element)), 0);
    EXPECT_DEATH(element[0] = 1, "use-after-poison");
}

namespace {

void *g_holders[100];

// Elements each of which holds the only pointer to a heap block. In a function of its own and many
// at a time, so that no left-over of the stack stands for all of them.
__attribute__((noinline)) void make_holders(void *pool) {
    for (void *&holder : g_holders) {
        holder = chunk_malloc(pool);
        *static_cast<void **>(holder) = ph_malloc_named(kTag, 100);
    }
}

}  // namespace

TEST_F(Chunk, LeakCheckFollowsLiveElements) {
    EXPECT_EXIT((make_holders(make_pool(40, 10)), _exit(__lsan_do_recoverable_leak_check())),
                testing::ExitedWithCode(0), "");
}

TEST_F(Chunk, LeakCheckDoesNotFollowFreeElements) {
    EXPECT_EXIT(
        {
            void *pool = make_pool(40, 10);
            make_holders(pool);
            give_back(pool, std::vector<void *>(std::begin(g_holders), std::end(g_holders)));
            _exit(__lsan_do_recoverable_leak_check());
        },
        testing::ExitedWithCode(1), "LeakSanitizer: detected memory leaks");
}

#endif
