#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "nothing_live.h"

namespace {

// A tag of its own for each test, so that its numbers start at 0.
uint32_t fresh_tag() {
    static uint32_t next = 0x2a00000;
    return next++;
}

poolheap_stats_t stats_of(uint32_t tag) {
    poolheap_stats_t stats{};
    poolheap_tag_stats(tag, &stats);
    return stats;
}

void expect_stats(uint32_t tag, uint64_t blocks, uint64_t bytes, uint64_t peak, uint64_t total) {
    const poolheap_stats_t stats = stats_of(tag);
    EXPECT_EQ(stats.live_blocks, blocks);
    EXPECT_EQ(stats.live_bytes, bytes);
    EXPECT_EQ(stats.peak_bytes, peak);
    EXPECT_EQ(stats.total_blocks, total);
}

struct Poolheap : NothingLive {
    uint32_t tag = fresh_tag();
};
using PoolheapDeath = Poolheap;

}  // namespace

TEST_F(Poolheap, BlocksAreAlignedTo16) {
    for (size_t size : {0u, 1u, 15u, 16u, 17u, 100u, 5000u, 300000u}) {
        void *block = ph_malloc_named(tag, size);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 16, 0u);
        memset(block, 0xab, size);
        EXPECT_EQ(ph_free_named(block), 0);
    }
}

TEST_F(Poolheap, CountsLiveBytesPeakAndTotal) {
    void *a = ph_malloc_named(tag, 100);
    expect_stats(tag, 1, 100, 100, 1);
    void *b = ph_calloc_named(tag, 3, 50);
    expect_stats(tag, 2, 250, 250, 2);
    ph_free_named(a);
    expect_stats(tag, 1, 150, 250, 2);
    char *c = ph_strdup_named(tag, "seven77");
    expect_stats(tag, 2, 158, 250, 3);
    ph_free_named(b);
    ph_free_named(c);
    expect_stats(tag, 0, 0, 250, 3);
}

TEST_F(Poolheap, PeakOfOneThreadIsExactBeyondTheSlackToo) {
    void *a = ph_malloc_named(tag, 100000);
    void *b = ph_malloc_named(tag, 60000);
    ph_free_named(a);
    ph_free_named(b);
    void *c = ph_malloc_named(tag, 159999);
    ph_free_named(c);
    expect_stats(tag, 0, 0, 160000, 3);
}

TEST_F(Poolheap, CallocGivesZeroes) {
    ph_free_named(memset(ph_malloc_named(tag, 640), 0xff, 640));
    auto *block = static_cast<char *>(ph_calloc_named(tag, 64, 10));
    EXPECT_EQ(std::count(block, block + 640, 0), 640);
    ph_free_named(block);
}

TEST_F(Poolheap, CallocOverflowIsNull) {
    EXPECT_EQ(ph_calloc_named(tag, SIZE_MAX / 2, 3), nullptr);
    EXPECT_EQ(ph_calloc_named(tag, SIZE_MAX, SIZE_MAX), nullptr);
    expect_stats(tag, 0, 0, 0, 0);
}

TEST_F(Poolheap, SizesBeyondAnyMemoryAreNull) {
    EXPECT_EQ(ph_malloc_named(tag, SIZE_MAX), nullptr);
    EXPECT_EQ(ph_malloc_named(tag, SIZE_MAX - 8), nullptr);
    void *block = ph_malloc_named(tag, 8);
    EXPECT_EQ(ph_realloc_named(tag, block, SIZE_MAX), nullptr);
    expect_stats(tag, 1, 8, 8, 1);
    ph_free_named(block);
}

TEST_F(Poolheap, EmptyBlocksAreBlocksOfTheirOwn) {
    void *a = ph_malloc_named(tag, 0);
    void *b = ph_calloc_named(tag, 0, 10);
    EXPECT_NE(a, nullptr);
    EXPECT_NE(b, nullptr);
    EXPECT_NE(a, b);
    expect_stats(tag, 2, 0, 0, 2);
    ph_free_named(a);
    ph_free_named(b);
}

TEST_F(Poolheap, ReallocKeepsContentsAndCountsTheDifference) {
    auto *block = static_cast<char *>(ph_malloc_named(tag, 10));
    memcpy(block, "123456789", 10);
    block = static_cast<char *>(ph_realloc_named(tag, block, 5000));
    EXPECT_STREQ(block, "123456789");
    expect_stats(tag, 1, 5000, 5000, 1);
    block = static_cast<char *>(ph_realloc_named(tag, block, 4));
    EXPECT_EQ(memcmp(block, "1234", 4), 0);
    expect_stats(tag, 1, 4, 5000, 1);
    block = static_cast<char *>(ph_realloc_named(tag, block, 0));
    EXPECT_NE(block, nullptr);
    expect_stats(tag, 1, 0, 5000, 1);
    ph_free_named(block);
}

TEST_F(Poolheap, ReallocOfNullMakesABlock) {
    void *block = ph_realloc_named(tag, nullptr, 12);
    expect_stats(tag, 1, 12, 12, 1);
    ph_free_named(block);
}

TEST_F(Poolheap, ReallocMovesABlockToItsNewTag) {
    const uint32_t other = fresh_tag();
    void *block = ph_malloc_named(tag, 20);
    block = ph_realloc_named(other, block, 30);
    expect_stats(tag, 0, 0, 20, 1);
    expect_stats(other, 1, 30, 30, 1);
    ph_free_named(block);
}

TEST_F(Poolheap, StrdupCopiesAndTakesNull) {
    EXPECT_EQ(ph_strdup_named(tag, nullptr), nullptr);
    const char *text = "";
    char *copy = ph_strdup_named(tag, text);
    EXPECT_STREQ(copy, "");
    EXPECT_NE(copy, text);
    ph_free_named(copy);
}

TEST_F(Poolheap, FreeOfNullIsHarmless) {
    EXPECT_EQ(ph_free_named(nullptr), 0);
}

TEST_F(Poolheap, UnusedTagHasNoNumbers) {
    poolheap_stats_t stats{1, 2, 3, 4};
    EXPECT_EQ(poolheap_tag_stats(tag, &stats), 2);
    EXPECT_EQ(stats.live_blocks + stats.live_bytes + stats.peak_bytes + stats.total_blocks, 0u);
    EXPECT_EQ(poolheap_tag_stats(tag, nullptr), 22);
    EXPECT_EQ(poolheap_total_stats(nullptr), 22);
}

TEST_F(Poolheap, TagZeroIsATagLikeAnyOther) {
    const poolheap_stats_t before = stats_of(0);
    void *block = ph_malloc_named(0, 9);
    EXPECT_EQ(stats_of(0).live_blocks, before.live_blocks + 1);
    EXPECT_EQ(stats_of(0).live_bytes, before.live_bytes + 9);
    ph_free_named(block);
}

TEST_F(Poolheap, SumsGoOverAllTags) {
    poolheap_stats_t before{}, after{};
    ASSERT_EQ(poolheap_total_stats(&before), 0);
    const uint64_t bytes = poolheap_live_bytes();
    void *a = ph_malloc_named(tag, 10);
    void *b = ph_malloc_named(fresh_tag(), 5);
    ASSERT_EQ(poolheap_total_stats(&after), 0);
    EXPECT_EQ(after.live_blocks, before.live_blocks + 2);
    EXPECT_EQ(after.total_blocks, before.total_blocks + 2);
    EXPECT_EQ(poolheap_live_bytes(), bytes + 15);
    ph_free_named(a);
    ph_free_named(b);
}

#ifndef NDEBUG

TEST_F(PoolheapDeath, DoubleFreeIsNamedWithItsTag) {
    poolheap_init(0x2a00000, [](uint32_t) { return "the-tag"; });
    void *block = ph_malloc_named(tag, 40);
    ph_free_named(block);
    EXPECT_DEATH(ph_free_named(block),
                 "L0 oruplatform: ph_free_named: double free of 0x[0-9a-f]+, "
                 "tag 0x2a000[0-9a-f]+ the-tag");
    poolheap_init(0x2a00000, nullptr);
}

TEST_F(PoolheapDeath, DoubleFreeIsFoundAfterManyOtherBlocks) {
    void *block = ph_malloc_named(tag, 40);
    ph_free_named(block);
    std::string filler(64, 'x');
    EXPECT_DEATH(
        {
            for (int i = 0; i < 100; i++) {
                (void)ph_malloc_named(tag, 4000);
            }
            ph_free_named(block);
        },
        "double free");
}

TEST_F(PoolheapDeath, ForeignPointersAreNamed) {
    alignas(16) char local[64] = "";
    char *inside = static_cast<char *>(ph_malloc_named(tag, 64));
    EXPECT_DEATH(ph_free_named(local + 16), "ph_free_named: foreign pointer 0x");
    EXPECT_DEATH(ph_free_named(inside + 8), "ph_free_named: foreign pointer 0x");
    EXPECT_DEATH(ph_free_named(reinterpret_cast<void *>(uintptr_t{4096})),
                 "foreign pointer 0x1000");
    EXPECT_DEATH(ph_realloc_named(tag, local + 16, 3), "ph_realloc_named: foreign pointer 0x");
    ph_free_named(inside);
}

TEST_F(PoolheapDeath, ReallocOfAFreedBlockIsADoubleFree) {
    void *block = ph_malloc_named(tag, 40);
    ph_free_named(block);
    EXPECT_DEATH(ph_realloc_named(tag, block, 80), "ph_realloc_named: double free");
}

#else

TEST_F(PoolheapDeath, BlockWithoutItsMarkIsNamed) {
    alignas(16) char local[64] = "";
    EXPECT_DEATH(ph_free_named(local + 16), "ph_free_named: 0x[0-9a-f]+ is no block");
}

#endif

#if defined(__SANITIZE_ADDRESS__)

TEST_F(PoolheapDeath, CheckedBuildSeesBothEndsOfABlock) {
    auto *block = static_cast<volatile char *>(ph_malloc_named(tag, 24));
    EXPECT_DEATH(block[24] = 1, "heap-buffer-overflow");
    EXPECT_DEATH(block[-1] = 1, "AddressSanitizer");
    ph_free_named(const_cast<char *>(block));
    EXPECT_DEATH(block[3] = 1, "heap-use-after-free");
}

#endif
