#include <gtest/gtest.h>
#include <oruplatform/chunk.h>
#include <oruplatform/poolheap.h>

#include <cstring>
#include <vector>

#include "nothing_live.h"

namespace {

constexpr uint32_t kTag = 0x2a70000;

struct FailureHook : NothingLive {
    // Makes `count` blocks and tells for each whether it came.
    static std::vector<bool> tries(int count, uint32_t tag = kTag) {
        std::vector<bool> result;
        for (int i = 0; i < count; i++) {
            void *block = ph_malloc_named(tag, 8);
            result.push_back(block != nullptr);
            ph_free_named(block);
        }
        return result;
    }
};

using Tries = std::vector<bool>;

}  // namespace

TEST_F(FailureHook, CountsNothingWhileOff) {
    const uint64_t calls = poolheap_fail_calls();
    EXPECT_EQ(tries(3), (Tries{true, true, true}));
    EXPECT_EQ(poolheap_fail_calls(), calls);
}

TEST_F(FailureHook, FailsTheNthOnce) {
    poolheap_fail_nth(2, 0);
    EXPECT_EQ(tries(4), (Tries{true, false, true, true}));
    EXPECT_EQ(poolheap_fail_calls(), 4u);
    EXPECT_EQ(poolheap_fail_hits(), 1u);
}

TEST_F(FailureHook, FailsTheNthAndAllBehind) {
    poolheap_fail_nth(3, 1);
    EXPECT_EQ(tries(5), (Tries{true, true, false, false, false}));
    EXPECT_EQ(poolheap_fail_hits(), 3u);
}

TEST_F(FailureHook, ZeroOnlyCounts) {
    poolheap_fail_nth(0, 0);
    EXPECT_EQ(tries(2), (Tries{true, true}));
    EXPECT_EQ(poolheap_fail_calls(), 2u);
    poolheap_fail_nth(0, 1);
    EXPECT_EQ(tries(1), (Tries{true}));
    EXPECT_EQ(poolheap_fail_calls(), 1u);
    EXPECT_EQ(poolheap_fail_hits(), 0u);
}

TEST_F(FailureHook, FailsATagAndNoOther) {
    poolheap_fail_tag(kTag + 1);
    EXPECT_EQ(tries(2, kTag), (Tries{true, true}));
    EXPECT_EQ(tries(2, kTag + 1), (Tries{false, false}));
    EXPECT_EQ(poolheap_fail_calls(), 4u);
    EXPECT_EQ(poolheap_fail_hits(), 2u);
}

TEST_F(FailureHook, OffKeepsTheNumbers) {
    poolheap_fail_nth(1, 1);
    EXPECT_EQ(tries(1), (Tries{false}));
    poolheap_fail_off();
    EXPECT_EQ(tries(1), (Tries{true}));
    EXPECT_EQ(poolheap_fail_calls(), 1u);
    EXPECT_EQ(poolheap_fail_hits(), 1u);
}

TEST_F(FailureHook, EveryAllocatingOperationCountsOnce) {
    void *pool = chunk_create_poolheap(32, 4, 0x101, 1, kTag);
    poolheap_fail_nth(0, 0);
    void *a = ph_malloc_named(kTag, 1);
    void *b = ph_calloc_named(kTag, 1, 1);
    a = ph_realloc_named(kTag, a, 900);
    void *c = ph_realloc_named(kTag, nullptr, 3);
    void *d = ph_strdup_named(kTag, "d");
    void *e = chunk_malloc(pool);
    EXPECT_EQ(poolheap_fail_calls(), 6u);
    for (void *block : {a, b, c, d}) {
        ph_free_named(block);
    }
    chunk_free(pool, e);
    EXPECT_EQ(poolheap_fail_calls(), 6u);
}

TEST_F(FailureHook, EveryAllocatingOperationFails) {
    void *pool = chunk_create_poolheap(32, 4, 0x101, 1, kTag);
    auto *block = static_cast<char *>(ph_malloc_named(kTag, 5));
    memcpy(block, "four", 5);
    poolheap_fail_nth(1, 1);
    EXPECT_EQ(ph_malloc_named(kTag, 1), nullptr);
    EXPECT_EQ(ph_calloc_named(kTag, 1, 1), nullptr);
    EXPECT_EQ(ph_realloc_named(kTag, block, 50), nullptr);
    EXPECT_EQ(ph_realloc_named(kTag, nullptr, 50), nullptr);
    EXPECT_EQ(ph_strdup_named(kTag, "x"), nullptr);
    EXPECT_EQ(chunk_malloc(pool), nullptr);
    EXPECT_EQ(poolheap_fail_hits(), 6u);
    EXPECT_STREQ(block, "four");
    ph_free_named(block);
}

TEST_F(FailureHook, RefillsOfAPoolAreNotCounted) {
    void *pool = chunk_create_poolheap(32, 2, 0x101, 1, kTag);
    poolheap_fail_nth(0, 0);
    std::vector<void *> elements;
    for (int i = 0; i < 500; i++) {
        elements.push_back(chunk_malloc(pool));
    }
    EXPECT_EQ(poolheap_fail_calls(), 500u);
    for (void *element : elements) {
        EXPECT_NE(chunk_free(pool, element), 0);
    }
    EXPECT_EQ(poolheap_fail_calls(), 500u);
}

TEST_F(FailureHook, MakingAPoolOfTheFailedTagGivesNull) {
    poolheap_fail_tag(kTag);
    EXPECT_EQ(chunk_create_poolheap(32, 2, 0x101, 1, kTag), nullptr);
    EXPECT_NE(chunk_create_poolheap(32, 2, 0x101, 1, kTag + 1), nullptr);
    EXPECT_EQ(poolheap_fail_calls(), 0u);
}

TEST_F(FailureHook, PoolElementsOfTheFailedTagFail) {
    void *pool = chunk_create_poolheap(32, 2, 0x101, 1, kTag);
    poolheap_fail_tag(kTag);
    EXPECT_EQ(chunk_malloc(pool), nullptr);
    EXPECT_EQ(poolheap_fail_hits(), 1u);
}
