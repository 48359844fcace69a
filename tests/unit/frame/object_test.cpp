// The object core, seen through the two plainest objects, string buffers and iterators.
#include <gtest/gtest.h>
#include <oruplatform/chunk.h>
#include <oruplatform/poolheap.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "oru/iter.h"
#include "oru/lib.h"
#include "oru/strbuf.h"
#include "tests/support/child.h"
#include "tests/support/death.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::Trace;
using oru::test::TraceCapture;

std::string line(const char *verb, const void *object, unsigned count) {
    char text[100];
    std::snprintf(text, sizeof text, "oru %s oru_do_strbuf %p %u", verb, object, count);
    return text;
}

TEST(Object, CountsAreTracedAtLevelEight) {
    TraceCapture traces(8);
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    EXPECT_EQ(oru_do_strbuf_ref(buf), buf);
    oru_do_strbuf_deref(buf);
    oru_do_strbuf_deref(buf);
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{{8, line("ref", buf, 1)},    // made
                                  {8, line("ref", buf, 2)},    // read back after
                                  {8, line("deref", buf, 2)},  // read before any change
                                  {8, line("deref", buf, 1)}}));
}

TEST(Object, NullIsAcceptedWithoutATrace) {
    TraceCapture traces(8);
    EXPECT_EQ(oru_do_strbuf_ref(nullptr), nullptr);
    oru_do_strbuf_deref(nullptr);
    oru_do_iter_deref(nullptr);
    EXPECT_TRUE(traces.lines().empty());
}

TEST(Object, ACountOfZeroIsTerminal) {
    ORUDoIter *iter = oru_do_iter_new();
    iter->ref = 0;
    EXPECT_FATAL(oru_do_iter_deref(iter), "Fatal problem in oru_do_iter deref handling 0x");
    iter->ref = 1;
    oru_do_iter_deref(iter);
}

TEST(Object, PoolsAreTracedAndReturned) {
    oru::test::expect_in_child([] {
        TraceCapture traces;
        void *pool = init_chunk_poolheap_oru_do_iter(16, 0);
        ASSERT_NE(pool, nullptr);
        char expected[100];
        std::snprintf(expected, sizeof expected, "chunk create oru_do_iter %zu 16",
                      sizeof(ORUDoIter));
        EXPECT_EQ(traces.lines(), (std::vector<Trace>{{5, expected}}));

        chunk_stats_t stats{};
        ORUDoIter *iter = oru_do_iter_new();
        chunk_pool_stats(pool, &stats);
        EXPECT_EQ(stats.live, 1u);
        EXPECT_EQ(stats.tag, 0x2900010u);
        EXPECT_EQ(stats.slab_count, 16u);
        oru_do_iter_deref(iter);
        chunk_pool_stats(pool, &stats);
        EXPECT_EQ(stats.live, 0u);
    });
}

TEST(Object, ASecondPoolForgetsTheFirst) {
    oru::test::expect_in_child([] {
        void *first = init_chunk_poolheap_oru_do_iter(16, 0);
        void *second = init_chunk_poolheap_oru_do_iter(16, 0);
        EXPECT_NE(first, second);
        ORUDoIter *iter = oru_do_iter_new();
        chunk_stats_t stats{};
        chunk_pool_stats(first, &stats);
        EXPECT_EQ(stats.live, 0u);
        chunk_pool_stats(second, &stats);
        EXPECT_EQ(stats.live, 1u);
        oru_do_iter_deref(iter);
    });
}

TEST(Object, AnObjectMadeBeforeItsPoolCannotBeReleasedIntoIt) {
    EXPECT_FATAL(
        {
            init_chunk_poolheap_oru_do_iter(16, 0);
            ORUDoIter *iter = oru_do_iter_new();
            init_chunk_poolheap_oru_do_iter(16, 0);
            oru_do_iter_deref(iter);
        },
        "Failed to free ##name from chunk poolheap_chunk_##type");
}

TEST(Object, ARecordOfTheHeapCannotBeReleasedIntoAPoolMadeLater) {
    EXPECT_FATAL(
        {
            ORUDoStrbuf *buf = oru_do_strbuf_new();
            init_chunk_poolheap_oru_do_strbuf(16, 0);
            oru_do_strbuf_deref(buf);
        },
        "Failed to free ##name from chunk poolheap_chunk_##type");
}

TEST(Object, APoolThatCannotBeMadeIsFatal) {
    EXPECT_FATAL(init_chunk_poolheap_oru_do_iter(0, 0), "Unable to create chunk for oru_do_iter");
}

TEST(Iterator, ANewOneIsUnbound) {
    ORUDoIter *iter = oru_do_iter_new();
    EXPECT_EQ(iter->ref, 1u);
    EXPECT_EQ(iter->coll_type, -1);
    EXPECT_EQ(iter->collection, nullptr);
    EXPECT_EQ(iter->next, nullptr);
    EXPECT_EQ(iter->position, 0u);
    oru_do_iter_deref(iter);
}

TEST(Iterator, StorageOfTheCallerBecomesUnbound) {
    ORUDoIter iter;
    std::memset(&iter, 0x5a, sizeof iter);
    oru_do_iter_init(&iter);
    EXPECT_EQ(iter.ref, 1u);
    EXPECT_EQ(iter.coll_type, -1);
    EXPECT_EQ(iter.collection, nullptr);
    EXPECT_EQ(iter.next, nullptr);
    EXPECT_EQ(iter.position, 0u);
    oru_do_iter_init(nullptr);
}

TEST(Iterator, ANewOneNeedsMemory) {
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_do_iter_new(), nullptr);
    poolheap_fail_off();
}

TEST(Tags, NamesFollowTheIndex) {
    EXPECT_STREQ(tag_name_lookup(0x2900000), "oruapi");
    EXPECT_STREQ(tag_name_lookup(0x2900001), "oruapi-name");
    EXPECT_STREQ(tag_name_lookup(0x2900022), "oruapi-s-type-meta");
    EXPECT_STREQ(tag_name_lookup(0x2900027), "oruapi-strdup");
    EXPECT_STREQ(tag_name_lookup(0x290003a), "oruapi-vtable_sorter");
    EXPECT_STREQ(tag_name_lookup(0x2900045), "oruapi-mr-meta-bool");
    EXPECT_STREQ(tag_name_lookup(0x2900046), "oruapi-invalid");
    EXPECT_STREQ(tag_name_lookup(0x29fffff), "oruapi-invalid");
    EXPECT_STREQ(tag_name_lookup(0x2800002), "error-wrong-component");
    EXPECT_STREQ(tag_name_lookup(0), "error-wrong-component");
}

}  // namespace
