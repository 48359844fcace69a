#include "oru/strbuf.h"

#include <gtest/gtest.h>
#include <oruplatform/chunk.h>
#include <oruplatform/poolheap.h>

#include <cstdio>
#include <string>

#include "oru/rc.h"
#include "tests/support/child.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::Trace;
using oru::test::TraceCapture;

// The record as outside code compiled apart sees it.
struct StrbufRecord {
    char *str;
    int32_t size;
    char *cur;
    int32_t left;
    int32_t len;
    uint32_t ref;
    int32_t on_heap;
};

const StrbufRecord &record(ORUDoStrbuf *buf) {
    return *reinterpret_cast<StrbufRecord *>(buf);
}

constexpr uint32_t kStorageTag = 0x2900000 + 35;

class Strbuf : public testing::Test {
  protected:
    ~Strbuf() override { oru_do_strbuf_deref(buf); }
    std::string text() const { return oru_do_strbuf_to_string(buf); }

    // From now on the buffer holds what it held and is in the failed state.
    void fail() {
        poolheap_fail_nth(1, 1);
        oru_do_strbuf_add_tab(buf, 100000);
        poolheap_fail_off();
        ASSERT_EQ(oru_do_strbuf_get_err(buf), 10002);
    }

    ORUDoStrbuf *buf = oru_do_strbuf_new();
};

TEST_F(Strbuf, StartsEmptyAndHealthy) {
    EXPECT_EQ(text(), "");
    EXPECT_EQ(oru_do_strbuf_get_len(buf), 0);
    EXPECT_EQ(oru_do_strbuf_get_err(buf), 0);
}

TEST_F(Strbuf, TheRecordFollowsTheText) {
    const StrbufRecord &fields = record(buf);
    EXPECT_EQ(fields.size, 256);
    EXPECT_EQ(fields.cur, fields.str);
    EXPECT_EQ(fields.left, 255);
    EXPECT_EQ(fields.len, 0);
    EXPECT_EQ(fields.ref, 1u);
    EXPECT_EQ(fields.on_heap, 0);

    oru_do_strbuf_add_string(buf, std::string(300, 'x').c_str());
    EXPECT_EQ(fields.size, 514);
    EXPECT_EQ(fields.cur, fields.str + 300);
    EXPECT_EQ(*fields.cur, '\0');
    EXPECT_EQ(fields.left, 255);
    EXPECT_EQ(fields.len, 300);
    EXPECT_EQ(fields.on_heap, 1);

    EXPECT_EQ(oru_do_strbuf_remove_ftr(buf, "xx"), 298);
    EXPECT_EQ(fields.cur, fields.str + 298);
    EXPECT_EQ(fields.left, 2);

    oru_do_strbuf_clear(buf);
    EXPECT_EQ(fields.cur, fields.str);
    EXPECT_EQ(fields.size, 514);
    EXPECT_EQ(fields.left, 514);
    EXPECT_EQ(fields.on_heap, 1);
}

TEST_F(Strbuf, FailedIsARecordWithoutACursor) {
    oru_do_strbuf_add_string(buf, "kept");
    fail();
    const StrbufRecord &fields = record(buf);
    EXPECT_EQ(fields.cur, nullptr);
    EXPECT_STREQ(fields.str, "kept");
    EXPECT_EQ(fields.size, 256);
    EXPECT_EQ(fields.len, 4);
    EXPECT_EQ(fields.on_heap, 0);
}

TEST_F(Strbuf, SharesAndReleases) {
    EXPECT_EQ(oru_do_strbuf_ref(buf), buf);
    EXPECT_EQ(record(buf).ref, 2u);
    oru_do_strbuf_deref(buf);
    EXPECT_EQ(record(buf).ref, 1u);
}

TEST_F(Strbuf, AppendsGiveTheNewLength) {
    EXPECT_EQ(oru_do_strbuf_add_string(buf, "abc"), 3);
    EXPECT_EQ(oru_do_strbuf_add_char(buf, 'd'), 4);
    EXPECT_EQ(oru_do_strbuf_add_string_l(buf, "efgh", 2), 6);
    EXPECT_EQ(oru_do_strbuf_add_long(buf, -12), 9);
    EXPECT_EQ(oru_do_strbuf_add_unsigned_long(buf, 7), 10);
    EXPECT_EQ(oru_do_strbuf_add_tab(buf, 2), 12);
    EXPECT_EQ(text(), "abcdef-127\t\t");
}

TEST_F(Strbuf, AnEmptyTextGivesMinusOneAndChangesNothing) {
    oru_do_strbuf_add_string(buf, "a");
    EXPECT_EQ(oru_do_strbuf_add_string(buf, ""), -1);
    EXPECT_EQ(oru_do_strbuf_add_string_l(buf, "x", 0), -1);
    EXPECT_EQ(oru_do_strbuf_add_string_l(buf, "x", -1), -1);
    EXPECT_EQ(text(), "a");
    EXPECT_EQ(oru_do_strbuf_get_err(buf), 0);
}

TEST_F(Strbuf, GrowsAtTheTwoHundredFiftySixthByte) {
    TraceCapture traces;
    oru_do_strbuf_add_string(buf, std::string(255, 'x').c_str());
    EXPECT_TRUE(traces.lines().empty());
    EXPECT_EQ(oru_do_strbuf_add_char(buf, 'y'), 256);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{7, "oru_do_strbuf resize new_size=514"}}));
    EXPECT_EQ(text(), std::string(255, 'x') + "y");
}

TEST_F(Strbuf, SizesRunFrom256To514To1030To2062) {
    TraceCapture traces;
    for (int i = 0; i < 1500; ++i)
        oru_do_strbuf_add_char(buf, 'z');
    EXPECT_EQ(traces.at(7), (std::vector<std::string>{"oru_do_strbuf resize new_size=514",
                                                      "oru_do_strbuf resize new_size=1030",
                                                      "oru_do_strbuf resize new_size=2062"}));
    EXPECT_EQ(text(), std::string(1500, 'z'));
}

TEST_F(Strbuf, AnAppendThatNeedsMoreThanTwiceTheSizeGetsWhatItNeeds) {
    TraceCapture traces;
    oru_do_strbuf_add_string(buf, std::string(1000, 'x').c_str());
    EXPECT_EQ(traces.at(7), (std::vector<std::string>{"oru_do_strbuf resize new_size=1001"}));
}

// Twice 0x40000000 and two is negative in 32 bits.
TEST_F(Strbuf, TheLargestSizeIsAskedForWhereDoublingFailsIn32Bits) {
    auto &fields = *reinterpret_cast<StrbufRecord *>(buf);
    const StrbufRecord before = fields;
    fields.size = 0x40000000;
    fields.len = 0x3fffffff;
    TraceCapture traces;
    poolheap_fail_nth(1, 1);
    EXPECT_EQ(oru_do_strbuf_add_char(buf, 'a'), -1);
    poolheap_fail_off();
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{{7, "oru_do_strbuf resize new_size=2147483647"}}));
    EXPECT_EQ(fields.cur, nullptr);
    fields = before;
}

TEST_F(Strbuf, AFailedBufferAsksNoMore) {
    fail();
    TraceCapture traces;
    poolheap_fail_nth(0, 0);
    const uint64_t calls = poolheap_fail_calls();
    EXPECT_EQ(oru_do_strbuf_add_string(buf, std::string(1000, 'x').c_str()), -1);
    EXPECT_EQ(oru_do_strbuf_add_tab(buf, 1000), 0);
    EXPECT_EQ(oru_do_strbuf_add_double(buf, 1), -1);
    EXPECT_EQ(poolheap_fail_calls(), calls);
    poolheap_fail_off();
    EXPECT_TRUE(traces.lines().empty());
}

TEST_F(Strbuf, NumbersAskForTheirRoomAhead) {
    TraceCapture traces;
    oru_do_strbuf_add_string(buf, std::string(216, 'x').c_str());
    oru_do_strbuf_add_long(buf, 1);
    EXPECT_TRUE(traces.at(7).empty());  // 216 + 40 fits
    oru_do_strbuf_add_unsigned_long(buf, 2);
    EXPECT_EQ(traces.at(7), (std::vector<std::string>{"oru_do_strbuf resize new_size=514"}));
    oru_do_strbuf_add_double(buf, 0.5);  // 218 + 512 = 730
    EXPECT_EQ(traces.at(7).back(), "oru_do_strbuf resize new_size=1030");
    EXPECT_EQ(text(), std::string(216, 'x') + "120.5");
}

TEST_F(Strbuf, NumbersPrintAsPrintfDoes) {
    oru_do_strbuf_add_long(buf, INT64_MIN);
    oru_do_strbuf_add_char(buf, ' ');
    oru_do_strbuf_add_unsigned_long(buf, UINT64_MAX);
    oru_do_strbuf_add_char(buf, ' ');
    oru_do_strbuf_add_double(buf, 1e100);
    oru_do_strbuf_add_char(buf, ' ');
    oru_do_strbuf_add_double(buf, 0.1);
    oru_do_strbuf_add_char(buf, ' ');
    oru_do_strbuf_add_double(buf, 1234567);
    EXPECT_EQ(text(), "-9223372036854775808 18446744073709551615 1e+100 0.1 1.23457e+06");
}

TEST_F(Strbuf, CountedTextStopsAtAZeroAndStillCounts) {
    EXPECT_EQ(oru_do_strbuf_add_string_l(buf, "ab\0cd", 5), 5);
    EXPECT_EQ(text(), "ab");
    EXPECT_EQ(oru_do_strbuf_get_len(buf), 5);
    EXPECT_EQ(oru_do_strbuf_add_char(buf, 'e'), 6);
    EXPECT_EQ(std::string(record(buf).str, 6), std::string("ab\0\0\0e", 6));
}

TEST_F(Strbuf, AZeroByteCountsThoughItEndsTheText) {
    oru_do_strbuf_add_char(buf, 'a');
    EXPECT_EQ(oru_do_strbuf_add_char(buf, 0), 2);
    EXPECT_EQ(text(), "a");
}

TEST_F(Strbuf, OnlyTheLowByteOfACharIsTaken) {
    EXPECT_EQ(oru_do_strbuf_add_char(buf, 0x4241), 1);
    EXPECT_EQ(text(), "A");
}

TEST_F(Strbuf, ExcludedBytesAreLeftOut) {
    EXPECT_EQ(oru_do_strbuf_add_string_l_excl(buf, "a-b.c", 5, "-."), 3);
    EXPECT_EQ(oru_do_strbuf_add_string_l_excl(buf, "d-e", 3, nullptr), 6);
    EXPECT_EQ(oru_do_strbuf_add_string_l_excl(buf, "f", 0, nullptr), 6);
    EXPECT_EQ(text(), "abcd-e");
}

TEST_F(Strbuf, SqlNamesHaveUnderscoresForDots) {
    EXPECT_EQ(oru_do_strbuf_add_string_encode_for_sql(buf, "a.b"), 4);
    EXPECT_EQ(text(), "_a_b");
    EXPECT_EQ(oru_do_strbuf_add_string_encode_for_sql(buf, ""), 5);
    EXPECT_EQ(oru_do_strbuf_add_string_encode_for_sql(buf, nullptr), 5);
    EXPECT_EQ(text(), "_a_b_");
}

TEST_F(Strbuf, XmlTextHasTheFiveEntities) {
    EXPECT_EQ(oru_do_strbuf_add_string_encode_for_xml(buf, "a\"&'<>b"), 27);
    EXPECT_EQ(text(), "a&quot;&amp;&apos;&lt;&gt;b");
    EXPECT_EQ(oru_do_strbuf_add_string_encode_for_xml(buf, ""), 27);
    EXPECT_EQ(oru_do_strbuf_add_string_encode_for_xml(buf, nullptr), 27);
}

TEST_F(Strbuf, HexadecimalRunsAndGroups) {
    const uint8_t bytes[] = {0xab, 0xcd};
    oru_do_strbuf_add_hexbuf(buf, bytes, 2);
    oru_do_strbuf_add_char(buf, ' ');
    oru_do_strbuf_add_hexbuf_sep(buf, bytes, 2, ":", 1);
    oru_do_strbuf_add_char(buf, ' ');
    oru_do_strbuf_add_hexbuf_sep(buf, bytes, 2, ":", 2);
    oru_do_strbuf_add_char(buf, ' ');
    oru_do_strbuf_add_hexbuf_sep_l(buf, bytes, 2, ":", 1);
    EXPECT_EQ(text(), "ABCD AB:CD ABCD ab:cd");
}

TEST_F(Strbuf, NoSeparatorWithoutATextOrAGroup) {
    const uint8_t bytes[] = {0, 1, 2};
    EXPECT_EQ(oru_do_strbuf_add_hexbuf_sep(buf, bytes, 3, nullptr, 1), 6);
    EXPECT_EQ(oru_do_strbuf_add_hexbuf_sep(buf, bytes, 3, ":", 0), 12);
    EXPECT_EQ(oru_do_strbuf_add_hexbuf_sep(buf, bytes, 3, ":", -1), 18);
    EXPECT_EQ(oru_do_strbuf_add_hexbuf(buf, bytes, 0), 18);
    EXPECT_EQ(oru_do_strbuf_add_hexbuf(buf, bytes, -1), 18);
    EXPECT_EQ(oru_do_strbuf_add_hexbuf_sep(buf, bytes, 0, ":", 1), 18);
    EXPECT_EQ(oru_do_strbuf_add_hexbuf_sep_l(buf, bytes, 0, ":", 1), 18);
    EXPECT_EQ(text(), "000102000102000102");
}

TEST_F(Strbuf, SeparatorsMayBeLongAndGroupsUneven) {
    const uint8_t bytes[] = {1, 2, 3, 4, 5};
    EXPECT_EQ(oru_do_strbuf_add_hexbuf_sep(buf, bytes, 5, "--", 2), 14);
    EXPECT_EQ(text(), "0102--0304--05");
}

TEST_F(Strbuf, NoTabsBelowOne) {
    EXPECT_EQ(oru_do_strbuf_add_tab(buf, 0), 0);
    EXPECT_EQ(oru_do_strbuf_add_tab(buf, -3), 0);
}

TEST_F(Strbuf, AKnownEndingComesOff) {
    oru_do_strbuf_add_string(buf, "a, b, ");
    EXPECT_EQ(oru_do_strbuf_remove_ftr(buf, "; "), -1);
    EXPECT_EQ(oru_do_strbuf_remove_ftr(buf, "longer than a, b, "), -1);
    EXPECT_EQ(oru_do_strbuf_remove_ftr(buf, ""), 6);
    EXPECT_EQ(text(), "a, b, ");
    EXPECT_EQ(oru_do_strbuf_remove_ftr(buf, ", "), 4);
    EXPECT_EQ(text(), "a, b");
    EXPECT_EQ(oru_do_strbuf_add_char(buf, '.'), 5);
    EXPECT_EQ(text(), "a, b.");
}

TEST_F(Strbuf, ClearKeepsTheCapacity) {
    oru_do_strbuf_add_string(buf, std::string(400, 'x').c_str());
    oru_do_strbuf_clear(buf);
    EXPECT_EQ(text(), "");
    EXPECT_EQ(oru_do_strbuf_get_len(buf), 0);
    TraceCapture traces;
    oru_do_strbuf_add_string(buf, std::string(500, 'y').c_str());
    EXPECT_TRUE(traces.lines().empty());
}

TEST_F(Strbuf, AFailedBufferKeepsItsTextUntilItIsCleared) {
    oru_do_strbuf_add_string(buf, "kept");
    fail();
    const uint8_t byte = 1;
    EXPECT_EQ(oru_do_strbuf_add_char(buf, 'x'), -1);
    EXPECT_EQ(oru_do_strbuf_add_string(buf, "x"), -1);
    EXPECT_EQ(oru_do_strbuf_add_string_l(buf, "x", 1), -1);
    EXPECT_EQ(oru_do_strbuf_add_long(buf, 1), -1);
    EXPECT_EQ(oru_do_strbuf_add_unsigned_long(buf, 1), -1);
    EXPECT_EQ(oru_do_strbuf_add_double(buf, 1), -1);
    EXPECT_EQ(oru_do_strbuf_add_tab(buf, 1), 4);
    EXPECT_EQ(oru_do_strbuf_add_string_l_excl(buf, "x", 1, nullptr), 4);
    EXPECT_EQ(oru_do_strbuf_add_string_encode_for_sql(buf, "x"), 4);
    EXPECT_EQ(oru_do_strbuf_add_string_encode_for_xml(buf, "x"), 4);
    EXPECT_EQ(oru_do_strbuf_add_hexbuf(buf, &byte, 1), 4);
    EXPECT_EQ(oru_do_strbuf_add_hexbuf_sep(buf, &byte, 1, ":", 1), 4);
    EXPECT_EQ(oru_do_strbuf_add_hexbuf_sep_l(buf, &byte, 1, ":", 1), 4);
    EXPECT_EQ(oru_do_strbuf_remove_ftr(buf, "pt"), -1);
    EXPECT_EQ(text(), "kept");

    oru_do_strbuf_clear(buf);
    EXPECT_EQ(oru_do_strbuf_get_err(buf), 0);
    EXPECT_EQ(oru_do_strbuf_add_string(buf, "works"), 5);
}

TEST_F(Strbuf, AFailedGrowthOfHeapStorageKeepsTheTextToo) {
    const std::string kept(600, 'k');
    oru_do_strbuf_add_string(buf, kept.c_str());
    fail();
    EXPECT_EQ(text(), kept);
    oru_do_strbuf_clear(buf);
    EXPECT_EQ(oru_do_strbuf_add_char(buf, 'a'), 1);
}

TEST_F(Strbuf, MoreThanTheLengthCanCountFails) {
    EXPECT_EQ(oru_do_strbuf_add_string(buf, "a"), 1);
    EXPECT_EQ(oru_do_strbuf_add_tab(buf, INT32_MAX), 1);
    EXPECT_EQ(oru_do_strbuf_get_err(buf), 10002);
    EXPECT_EQ(text(), "a");
}

TEST_F(Strbuf, ACopyBelongsToTheCaller) {
    oru_do_strbuf_add_string(buf, "text");
    char *copy = nullptr;
    char *result = oru_do_strbuf_to_string_ptr(buf, &copy);
    EXPECT_EQ(result, copy);
    EXPECT_STREQ(copy, "text");
    ph_free_named(copy);
}

TEST_F(Strbuf, ACopyOfAFailedBufferIsWhatWasThere) {
    oru_do_strbuf_add_string(buf, "kept");
    fail();
    char *copy = nullptr;
    oru_do_strbuf_to_string_ptr(buf, &copy);
    EXPECT_STREQ(copy, "kept");
    ph_free_named(copy);
}

TEST_F(Strbuf, ACopyIsABlockOfTheLengthAndTheTagOfStorage) {
    oru_do_strbuf_add_string(buf, "text");
    poolheap_stats_t before{};
    poolheap_tag_stats(kStorageTag, &before);
    char *copy = nullptr;
    oru_do_strbuf_to_string_ptr(buf, &copy);
    poolheap_stats_t with{};
    poolheap_tag_stats(kStorageTag, &with);
    EXPECT_EQ(with.live_blocks, before.live_blocks + 1);
    EXPECT_EQ(with.live_bytes, before.live_bytes + 5);
    ph_free_named(copy);
}

TEST_F(Strbuf, ACopyThatCannotBeHadLeavesTheOutput) {
    char *copy = reinterpret_cast<char *>(buf);
    poolheap_fail_nth(1, 1);
    EXPECT_EQ(oru_do_strbuf_to_string_ptr(buf, &copy), nullptr);
    poolheap_fail_off();
    EXPECT_EQ(copy, reinterpret_cast<char *>(buf));
}

TEST_F(Strbuf, PrintsOnAStream) {
    oru_do_strbuf_add_string(buf, "on a stream");
    FILE *stream = std::tmpfile();
    EXPECT_GE(oru_do_strbuf_print_fp(buf, stream), 0);
    std::rewind(stream);
    char line[32] = "";
    EXPECT_NE(std::fgets(line, sizeof line, stream), nullptr);
    EXPECT_STREQ(line, "on a stream");
    std::fclose(stream);
}

TEST(StrbufBirth, WithoutStorageIsTheFailedState) {
    poolheap_fail_nth(2, 0);
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    poolheap_fail_off();
    ASSERT_NE(buf, nullptr);
    EXPECT_EQ(record(buf).ref, 1u);
    EXPECT_EQ(record(buf).str, nullptr);
    EXPECT_EQ(record(buf).cur, nullptr);
    EXPECT_EQ(record(buf).size, 0);
    EXPECT_EQ(record(buf).left, 0);
    EXPECT_EQ(oru_do_strbuf_get_err(buf), 10002);
    EXPECT_EQ(oru_do_strbuf_get_len(buf), 0);
    EXPECT_EQ(oru_do_strbuf_to_string(buf), nullptr);
    EXPECT_EQ(oru_do_strbuf_add_char(buf, 'a'), -1);
    EXPECT_EQ(oru_do_strbuf_remove_ftr(buf, ""), -1);
    EXPECT_EQ(oru_do_strbuf_print_fp(buf, stdout), 0);
    char *copy = nullptr;
    EXPECT_EQ(oru_do_strbuf_to_string_ptr(buf, &copy), nullptr);
    oru_do_strbuf_clear(buf);
    EXPECT_EQ(oru_do_strbuf_get_err(buf), 10002);
    oru_do_strbuf_deref(buf);
}

TEST(StrbufBirth, WithoutARecordIsNull) {
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_do_strbuf_new(), nullptr);
    poolheap_fail_off();
}

// ---- Pools ----

uint64_t live_elements(void *pool) {
    chunk_stats_t stats{};
    chunk_pool_stats(pool, &stats);
    return stats.live;
}

uint64_t live_storage_blocks() {
    poolheap_stats_t stats{};
    poolheap_tag_stats(kStorageTag, &stats);
    return stats.live_blocks;
}

TEST(StrbufPools, HoldRecordsAndFirstStorage) {
    oru::test::expect_in_child([] {
        TraceCapture traces;
        void *records = init_chunk_poolheap_oru_do_strbuf(4, 0);
        void *storage = init_chunk_poolheap_oru_do_strbuf_misc(4, 0);
        EXPECT_EQ(traces.at(5),
                  (std::vector<std::string>{"chunk create oru_do_strbuf 40 4",
                                            "chunk create oru_do_strbuf_misc 256 4"}));
        chunk_stats_t stats{};
        chunk_pool_stats(records, &stats);
        EXPECT_EQ(stats.tag, 0x2900000u + 26);
        chunk_pool_stats(storage, &stats);
        EXPECT_EQ(stats.tag, kStorageTag);
    });
}

TEST(StrbufPools, AShortTextIsTwoElementsAndNoBlock) {
    oru::test::expect_in_child([] {
        void *records = init_chunk_poolheap_oru_do_strbuf(4, 0);
        void *storage = init_chunk_poolheap_oru_do_strbuf_misc(4, 0);
        poolheap_fail_nth(0, 0);
        const uint64_t calls = poolheap_fail_calls();
        ORUDoStrbuf *buf = oru_do_strbuf_new();
        oru_do_strbuf_add_string(buf, std::string(255, 'x').c_str());
        EXPECT_EQ(live_elements(records), 1u);
        EXPECT_EQ(live_elements(storage), 1u);
        EXPECT_EQ(live_storage_blocks(), 0u);
        EXPECT_EQ(poolheap_fail_calls(), calls + 2);
        poolheap_fail_off();
        oru_do_strbuf_deref(buf);
        EXPECT_EQ(live_elements(records), 0u);
        EXPECT_EQ(live_elements(storage), 0u);
    });
}

TEST(StrbufPools, GrowthGivesTheElementBack) {
    oru::test::expect_in_child([] {
        void *storage = init_chunk_poolheap_oru_do_strbuf_misc(4, 0);
        ORUDoStrbuf *buf = oru_do_strbuf_new();
        oru_do_strbuf_add_string(buf, std::string(255, 'x').c_str());
        oru_do_strbuf_add_char(buf, 'y');
        EXPECT_EQ(live_elements(storage), 0u);
        EXPECT_EQ(live_storage_blocks(), 1u);
        EXPECT_EQ(oru_do_strbuf_to_string(buf), std::string(255, 'x') + "y");
        oru_do_strbuf_deref(buf);
        EXPECT_EQ(live_elements(storage), 0u);
        EXPECT_EQ(live_storage_blocks(), 0u);
    });
}

constexpr char kRefused[] = "Failed to free ##name from chunk poolheap_chunk_##type";

TEST(StrbufPools, StorageThatIsNotOfThePoolIsFatal) {
    EXPECT_FATAL(
        {
            ORUDoStrbuf *buf = oru_do_strbuf_new();
            init_chunk_poolheap_oru_do_strbuf_misc(4, 0);
            oru_do_strbuf_deref(buf);
        },
        kRefused);
    EXPECT_FATAL(
        {
            ORUDoStrbuf *buf = oru_do_strbuf_new();
            init_chunk_poolheap_oru_do_strbuf_misc(4, 0);
            oru_do_strbuf_add_tab(buf, 256);
        },
        kRefused);
}

TEST(StrbufFatal, OneReleaseTooMany) {
    StrbufRecord dead{};
    EXPECT_FATAL(oru_do_strbuf_deref(reinterpret_cast<ORUDoStrbuf *>(&dead)),
                 "Fatal problem in oru_do_strbuf deref handling 0x");
}

TEST(StrbufMemory, EveryAllocationMayFail) {
    oru::test::sweep_oom(
        [] {
            ORUDoStrbuf *buf = oru_do_strbuf_new();
            if (buf == nullptr)
                return;
            for (int i = 0; i < 300; ++i)
                oru_do_strbuf_add_string(buf, "0123456789");
            const int32_t err = oru_do_strbuf_get_err(buf);
            EXPECT_EQ(err, oru::test::oom_hit() ? 10002 : 0);
            oru_do_strbuf_deref(buf);
        },
        {.promised_deaths = {}, .at_least = 4});
}

TEST(StrbufNull, OnlyTheErrorAndLifeAcceptNull) {
    EXPECT_EQ(oru_do_strbuf_get_err(nullptr), 10002);
    EXPECT_EQ(oru_do_strbuf_ref(nullptr), nullptr);
    oru_do_strbuf_deref(nullptr);
    char *copy = nullptr;
    EXPECT_ASSERTION(oru_do_strbuf_to_string(nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_strbuf_to_string_ptr(nullptr, &copy), "strbuf");
    EXPECT_ASSERTION(oru_do_strbuf_get_len(nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_strbuf_print_fp(nullptr, stdout), "strbuf");
    EXPECT_ASSERTION(oru_do_strbuf_clear(nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_strbuf_add_string(nullptr, "a"), "strbuf");
    EXPECT_ASSERTION(oru_do_strbuf_add_string_l(nullptr, "a", 1), "strbuf");
    EXPECT_ASSERTION(oru_do_strbuf_add_string_l_excl(nullptr, "a", 1, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_strbuf_add_char(nullptr, 'a'), "strbuf");
    EXPECT_ASSERTION(oru_do_strbuf_add_string_encode_for_sql(nullptr, "a"), "strbuf");
    EXPECT_ASSERTION(oru_do_strbuf_add_string_encode_for_xml(nullptr, "a"), "strbuf");
    EXPECT_ASSERTION(oru_do_strbuf_add_long(nullptr, 1), "strbuf");
    EXPECT_ASSERTION(oru_do_strbuf_add_unsigned_long(nullptr, 1), "strbuf");
    EXPECT_ASSERTION(oru_do_strbuf_add_double(nullptr, 1), "strbuf");
    EXPECT_ASSERTION(oru_do_strbuf_add_hexbuf(nullptr, "a", 1), "strbuf");
    EXPECT_ASSERTION(oru_do_strbuf_add_hexbuf_sep(nullptr, "a", 1, ":", 1), "strbuf");
    EXPECT_ASSERTION(oru_do_strbuf_add_hexbuf_sep_l(nullptr, "a", 1, ":", 1), "strbuf");
    EXPECT_ASSERTION(oru_do_strbuf_add_tab(nullptr, 1), "strbuf");
    EXPECT_ASSERTION(oru_do_strbuf_remove_ftr(nullptr, "a"), "strbuf");
}

TEST_F(Strbuf, ACopyNeedsAPlace) {
    EXPECT_ASSERTION(oru_do_strbuf_to_string_ptr(buf, nullptr), "strptr");
}

TEST_F(Strbuf, WhatIsAppendedMustBeThere) {
    EXPECT_ASSERTION(oru_do_strbuf_add_string(buf, nullptr), "text");
    EXPECT_ASSERTION(oru_do_strbuf_add_string_l(buf, nullptr, 1), "text");
    EXPECT_ASSERTION(oru_do_strbuf_add_string_l_excl(buf, nullptr, 1, ""), "text");
    EXPECT_ASSERTION(oru_do_strbuf_add_hexbuf(buf, nullptr, 1), "bytes");
    EXPECT_ASSERTION(oru_do_strbuf_add_hexbuf_sep(buf, nullptr, 1, ":", 1), "bytes");
    EXPECT_ASSERTION(oru_do_strbuf_add_hexbuf_sep_l(buf, nullptr, 1, ":", 1), "bytes");
    EXPECT_ASSERTION(oru_do_strbuf_remove_ftr(buf, nullptr), "footer");
    EXPECT_ASSERTION(oru_do_strbuf_print_fp(buf, nullptr), "stream");
    // Where nothing is taken from it, nothing need be there.
    EXPECT_EQ(oru_do_strbuf_add_string_l(buf, nullptr, 0), -1);
    EXPECT_EQ(oru_do_strbuf_add_string_l_excl(buf, nullptr, 0, ""), 0);
    EXPECT_EQ(oru_do_strbuf_add_hexbuf(buf, nullptr, 0), 0);
}

}  // namespace
