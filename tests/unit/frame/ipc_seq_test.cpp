// The sequence table in a process without a thread layer: keys need none, the rest ends at its
// first lock. The table at work is in tests/unit/frame_threads.
#include "oru/ipc_seq.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::Trace;
using oru::test::TraceCapture;

constexpr uint32_t kElementTag = 0x290003b;

std::string naming(const char *words, const char *key) {
    char text[200];
    std::snprintf(text, sizeof text, "%s %s %p", words, key, static_cast<const void *>(key));
    return text;
}

struct Number {
    uint32_t n;
    const char *key;
    const char *words;
};

class KeyOfNumber : public testing::TestWithParam<Number> {};

TEST_P(KeyOfNumber, IsUpperCaseHexadecimal) {
    TraceCapture traces;
    char *key = util_build_key(GetParam().n);
    ASSERT_STREQ(key, GetParam().key);
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{{7, GetParam().words}, {7, naming("ht_key:", key)}}));
    ipc_seq_delete_ht_key(key);
}

INSTANTIATE_TEST_SUITE_P(
    Some, KeyOfNumber,
    testing::Values(Number{255, "FF", "util build key 255"}, Number{0, "0", "util build key 0"},
                    Number{0xabcdef, "ABCDEF", "util build key 11259375"},
                    Number{0xffffffff, "FFFFFFFF", "util build key 4294967295"}));

TEST(KeyOfText, HoldsTheText) {
    TraceCapture traces;
    const char *text = "session:7";
    char *key = util_build_key_from_str(text);
    ASSERT_STREQ(key, "session:7");
    EXPECT_NE(key, text);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{7, "util build key str session:7"},
                                                  {7, naming("ht_key:", key)}}));
    ipc_seq_delete_ht_key(key);
}

TEST(KeyOfText, MayBeEmpty) {
    char *key = util_build_key_from_str("");
    EXPECT_STREQ(key, "");
    ipc_seq_delete_ht_key(key);
}

TEST(KeyOfText, OfSixtyFourCharactersIsWhole) {
    const std::string text(64, 'k');
    TraceCapture traces;
    char *key = util_build_key_from_str(text.c_str());
    ASSERT_STREQ(key, text.c_str());
    EXPECT_TRUE(traces.has(7, naming("ht_key:", key)));
    ipc_seq_delete_ht_key(key);
}

TEST(KeyOfText, OfOneMoreIsCutAndNobodyHearsOfIt) {
    const std::string text = std::string(64, 'k') + "x";
    TraceCapture traces;
    char *key = util_build_key_from_str(text.c_str());
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{7, "util build key str " + text}}));
    EXPECT_EQ(std::string(key), std::string(64, 'k'));
    ipc_seq_delete_ht_key(key);
}

TEST(KeyOfText, ThatIsLongerIsCutAndReported) {
    for (const size_t length : {66u, 100u, 5000u}) {
        const std::string text = std::string(64, 'k') + std::string(length - 64, 'x');
        TraceCapture traces;
        char *key = util_build_key_from_str(text.c_str());
        EXPECT_EQ(traces.lines(), (std::vector<Trace>{
                                      {7, "util build key str " + text},
                                      {3, "Failed to build hashmap key (input=" + text + ")"},
                                  }));
        EXPECT_EQ(std::string(key), std::string(64, 'k'));
        ipc_seq_delete_ht_key(key);
    }
}

TEST(KeyOfText, IsNullForNull) {
    TraceCapture traces;
    EXPECT_EQ(util_build_key_from_str(nullptr), nullptr);
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{{3, "Failed to build hashmap key (input is NULL)"}}));
}

TEST(Key, IsDeletedWithItsWords) {
    char *key = util_build_key(10);
    const std::string words = naming("Delete key", key);
    TraceCapture traces;
    ipc_seq_delete_ht_key(key);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{7, words}}));
}

TEST(Key, ThatIsNullIsReportedByItsDeletion) {
    TraceCapture traces;
    ipc_seq_delete_ht_key(nullptr);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{
                                  {3, "failed to delete hash table key, key passed in is NULL"},
                              }));
}

TEST(Key, IsNullWhenMemoryRunsOut) {
    oru::test::sweep_oom([] {
        char *of_number = util_build_key(255);
        char *of_text = util_build_key_from_str("text");
        EXPECT_EQ(of_number == nullptr || of_text == nullptr, oru::test::oom_hit());
        if (of_number != nullptr)
            ipc_seq_delete_ht_key(of_number);
        if (of_text != nullptr)
            ipc_seq_delete_ht_key(of_text);
    });
    poolheap_fail_tag(kElementTag);
    EXPECT_EQ(util_build_key(255), nullptr);
    poolheap_fail_off();
}

TEST(Key, ThatItsPoolDoesNotKnowIsFatal) {
    EXPECT_FATAL(
        {
            init_chunk_poolheap_seq_ht_table(4, 0);
            char foreign[] = "FF";
            ipc_seq_delete_ht_key(foreign);
        },
        "Failed to free ##name from chunk poolheap_chunk_##type");
}

TEST(WaitRecord, FieldsStandInTheirOrder) {
    EXPECT_EQ(offsetof(ht_val, lock), 0u);
    EXPECT_EQ(offsetof(ht_val, cond), 128u);
    EXPECT_EQ(offsetof(ht_val, signaled), 256u);
    EXPECT_EQ(offsetof(ht_val, reply), 264u);
    EXPECT_EQ(offsetof(ht_val, session_id), 272u);
    EXPECT_EQ(offsetof(ht_val, rc), 276u);
    EXPECT_EQ(sizeof(ht_val), 288u);
}

TEST(WaitRecord, ThatIsNullIsReportedByItsDeletion) {
    TraceCapture traces;
    ipc_seq_delete_ht_val(nullptr);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{
                                  {3, "failed to delete hash table value. value passed in is NULL"},
                              }));
}

TEST(SequenceTable, NeedsAThreadLayer) {
    EXPECT_FATAL(ipc_seq_ht_init(8), "No Valid Threading Model Active");
    EXPECT_FATAL(ipc_seq_create_ht_val(1), "No Valid Threading Model Active");
}

}  // namespace
