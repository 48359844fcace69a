// The sequence table on the thread layer, from one thread.
#include "oru/ipc_seq.h"

#include <gtest/gtest.h>
#include <oruplatform/hash.h>
#include <oruplatform/poolheap.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::Trace;
using oru::test::TraceCapture;
using Traces = std::vector<Trace>;

constexpr uint32_t kElementTag = 0x290003b;

// The record, as outside code compiled apart sees it.
struct TableRecord {
    void *ht;
    oru_mtx_t lock;
};

TableRecord &record(seq_ht_table *table) {
    return *reinterpret_cast<TableRecord *>(table);
}

[[gnu::format(printf, 1, 2)]] std::string text_of(const char *format, ...) {
    char text[300];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    return text;
}

class SequenceTable : public testing::Test {
  protected:
    ~SequenceTable() override {
        if (table != nullptr) {
            EXPECT_EQ(ipc_seq_ht_destroy(table), 0);
        }
        for (ht_val *val : vals)
            ipc_seq_delete_ht_val(val);
    }
    // A record in the table that the test deletes at its end.
    ht_val *insert(const char *key, uint32_t session_id) {
        ht_val *val = ipc_seq_create_ht_val(session_id);
        EXPECT_EQ(ipc_seq_ht_insert(table, key, val), 0);
        vals.push_back(val);
        return val;
    }

    seq_ht_table *table = ipc_seq_ht_init(8);
    std::vector<ht_val *> vals;
};

// What takes "no table" takes a null one and one without its hash table alike.
class NoTable : public testing::TestWithParam<bool> {
  protected:
    TableRecord bare{};
    seq_ht_table *table = GetParam() ? reinterpret_cast<seq_ht_table *>(&bare) : nullptr;
    ht_val val{};
    char key[2] = "k";
};

INSTANTIATE_TEST_SUITE_P(Either, NoTable, testing::Bool(), [](const auto &param) {
    return std::string(param.param ? "Bare" : "Null");
});

TEST_F(SequenceTable, IsMadeSilentlyWithANamedLock) {
    TraceCapture traces;
    seq_ht_table *made = ipc_seq_ht_init(0);
    ASSERT_NE(made, nullptr);
    EXPECT_NE(record(made).ht, nullptr);
    EXPECT_STREQ(record(made).lock.name, "oru_ipc_seq_ht_mutex");
    EXPECT_EQ(ipc_seq_ht_destroy(made), 0);
    EXPECT_TRUE(traces.lines().empty());
}

TEST_F(SequenceTable, IsNotMadeWithoutMemory) {
    const char *const words[] = {"Failed to allocate memory for seq hash table",
                                 "Failed to create hash map", "Failed to create hash map"};
    for (uint64_t nth = 1; nth <= 3; ++nth) {
        TraceCapture traces;
        poolheap_fail_nth(nth, 0);
        EXPECT_EQ(ipc_seq_ht_init(8), nullptr);
        poolheap_fail_off();
        EXPECT_EQ(traces.lines(), (Traces{{3, words[nth - 1]}}));
    }
}

TEST(WaitRecord, IsZeroButForItsLockAndSession) {
    // Whatever stood in the element before.
    char *key = util_build_key_from_str("");
    std::memset(key, 0xa5, sizeof(ht_val));
    key[sizeof(ht_val) - 1] = '\0';
    ipc_seq_delete_ht_key(key);

    ht_val *val = ipc_seq_create_ht_val(0xfffffffe);
    ASSERT_NE(val, nullptr);
    EXPECT_STREQ(val->lock.name, "oru_ipc_snd_rcv_mutex");
    EXPECT_EQ(val->signaled, 0);
    EXPECT_EQ(val->reply, 0);
    EXPECT_EQ(val->session_id, 0xfffffffe);
    EXPECT_EQ(val->rc, 0);
    EXPECT_EQ(oru_mtx_trylock(&val->lock), 0);
    EXPECT_EQ(oru_cond_timedwait(&val->cond, &val->lock, 1), 110);
    EXPECT_EQ(oru_mtx_unlock(&val->lock), 0);

    TraceCapture traces;
    const std::string words = text_of("Delete value %p", static_cast<void *>(val));
    ipc_seq_delete_ht_val(val);
    EXPECT_EQ(traces.lines(), (Traces{{7, words}}));
}

TEST(WaitRecord, IsNullWithoutMemory) {
    TraceCapture traces;
    poolheap_fail_tag(kElementTag);
    EXPECT_EQ(ipc_seq_create_ht_val(1), nullptr);
    poolheap_fail_off();
    EXPECT_EQ(traces.lines(), (Traces{{3, "Failed to malloc hash table value"}}));
}

TEST_F(SequenceTable, WhatIsInsertedIsFoundAndStays) {
    ht_val *val = ipc_seq_create_ht_val(1);
    vals.push_back(val);
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_insert(table, "a", val), 0);
    EXPECT_EQ(ipc_seq_ht_find(table, std::string("a").c_str()), val);
    EXPECT_EQ(ipc_seq_ht_find(table, "a"), val);
    const std::string found = text_of("Find a value=%p", static_cast<void *>(val));
    EXPECT_EQ(traces.lines(), (Traces{{7, "Inserting a rc=0"}, {7, found}, {7, found}}));
}

TEST_F(SequenceTable, WhatIsNotThereIsNotFound) {
    insert("a", 1);
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_find(table, "b"), nullptr);
    EXPECT_EQ(traces.lines(), (Traces{{7, "Find b value=(NULL)"}, {7, "Find b value=(nil)"}}));
}

TEST_F(SequenceTable, AnEqualKeyIsRefused) {
    ht_val *first = insert("a", 1);
    ht_val *second = ipc_seq_create_ht_val(2);
    vals.push_back(second);
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_insert(table, std::string("a").c_str(), second), 10000);
    EXPECT_EQ(traces.lines(),
              (Traces{{3, "Failed to add key to table"}, {7, "Inserting a rc=10000"}}));
    EXPECT_EQ(ipc_seq_ht_find(table, "a"), first);
}

TEST_F(SequenceTable, AnInsertWithoutMemoryIsRefused) {
    ht_val *val = ipc_seq_create_ht_val(1);
    vals.push_back(val);
    TraceCapture traces;
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(ipc_seq_ht_insert(table, "a", val), 10000);
    poolheap_fail_off();
    EXPECT_TRUE(traces.has(3, "Failed to add key to table"));
    EXPECT_EQ(ipc_seq_ht_find(table, "a"), nullptr);
}

TEST_F(SequenceTable, AnInsertWantsKeyAndRecord) {
    ht_val *val = ipc_seq_create_ht_val(1);
    vals.push_back(val);
    const char *key = "a";
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_insert(table, nullptr, val), 10000);
    EXPECT_EQ(ipc_seq_ht_insert(table, key, nullptr), 10000);
    EXPECT_EQ(ipc_seq_ht_insert(nullptr, nullptr, nullptr), 10000);  // looked at before the table
    EXPECT_EQ(traces.lines(),
              (Traces{{3, text_of("ht_key=(nil), ht_val=%p", static_cast<void *>(val))},
                      {3, text_of("ht_key=%p, ht_val=(nil)", static_cast<const void *>(key))},
                      {3, "ht_key=(nil), ht_val=(nil)"}}));
}

TEST_P(NoTable, TakesNoInsert) {
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_insert(table, key, &val), 10000);
    EXPECT_EQ(traces.lines(), (Traces{{3, "Failed to insert, NULL hashmap"}}));
}

TEST_P(NoTable, FindsNothing) {
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_find(table, key), nullptr);
    EXPECT_EQ(traces.lines(),
              (Traces{{3, "Failed to find hashmap entry. Hashtable or key not valid"}}));
}

TEST_F(SequenceTable, ANullKeyFindsNothing) {
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_find(table, nullptr), nullptr);
    EXPECT_EQ(traces.lines(),
              (Traces{{3, "Failed to find hashmap entry. Hashtable or key not valid"}}));
}

TEST_F(SequenceTable, AnAnswerReachesItsRecordAlone) {
    ht_val *val = insert("a", 1);
    ht_val *other = insert("b", 1);
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_find_and_update(table, std::string("a").c_str(), -4711), 0);
    EXPECT_TRUE(traces.lines().empty());
    EXPECT_EQ(val->reply, -4711);
    EXPECT_EQ(val->signaled, 1);
    EXPECT_EQ(val->rc, 0);
    EXPECT_EQ(ipc_seq_ht_find(table, "a"), val);
    EXPECT_EQ(other->reply, 0);
    EXPECT_EQ(other->signaled, 0);
}

TEST_F(SequenceTable, ALaterAnswerReplacesTheFirst) {
    ht_val *val = insert("a", 1);
    ipc_seq_ht_find_and_update(table, "a", 1);
    ipc_seq_ht_find_and_update(table, "a", 2);
    EXPECT_EQ(val->reply, 2);
    EXPECT_EQ(val->signaled, 1);
}

TEST_F(SequenceTable, AnAnswerForNobodyIsAFailure) {
    insert("a", 1);
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_find_and_update(table, "b", 1), 10000);
    EXPECT_EQ(traces.lines(), (Traces{{7, "Did not find a entry for b in hashtable"}}));
}

TEST_F(SequenceTable, AnAnswerWithoutAKeyIsNoFailure) {
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_find_and_update(table, nullptr, 1), 0);
    EXPECT_EQ(traces.lines(),
              (Traces{{3, "Failed to find hashmap entry. hash table or key not valid"}}));
}

TEST_P(NoTable, TakesAnswersWithoutAFailure) {
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_find_and_update(table, key, 1), 0);
    EXPECT_EQ(traces.lines(),
              (Traces{{3, "Failed to find hashmap entry. hash table or key not valid"}}));
}

TEST_F(SequenceTable, ARemovalEndsTheRecordAndItsKey) {
    char *key = util_build_key(255);
    ht_val *val = ipc_seq_create_ht_val(1);
    ipc_seq_ht_insert(table, key, val);
    const void *record_at = val;
    const void *key_at = key;
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_remove(table, key), 0);
    EXPECT_EQ(traces.lines(), (Traces{{7, text_of("Remove FF %p %p", key_at, record_at)},
                                      {7, text_of("Delete key FF %p", key_at)},
                                      {7, text_of("Delete value %p", record_at)}}));
    EXPECT_EQ(ipc_seq_ht_find(table, "FF"), nullptr);
}

TEST_F(SequenceTable, ARemovalEndsTheKeyThatItIsGiven) {
    ipc_seq_ht_insert(table, "FF", ipc_seq_create_ht_val(1));
    char *key = util_build_key(255);
    const std::string words = text_of("Delete key FF %p", static_cast<void *>(key));
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_remove(table, key), 0);
    EXPECT_TRUE(traces.has(7, words));
}

TEST_F(SequenceTable, ARemovalOfWhatIsNotThereLeavesTheKey) {
    insert("a", 1);
    char *key = util_build_key(255);
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_remove(table, key), 0);
    EXPECT_EQ(traces.lines(), (Traces{{3, "Failed to remove the value from Hashmap"}}));
    EXPECT_STREQ(key, "FF");
    ipc_seq_delete_ht_key(key);
}

TEST_F(SequenceTable, ARemovalWantsAKey) {
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_remove(table, nullptr), 10000);
    EXPECT_EQ(ipc_seq_ht_remove(nullptr, nullptr), 10000);
    EXPECT_EQ(traces.lines(), (Traces{{3, "key is NULL"}, {3, "key is NULL"}}));
}

TEST_P(NoTable, HasNothingToRemove) {
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_remove(table, key), 10000);
    EXPECT_EQ(traces.lines(), (Traces{{3, "hash table is NULL"}}));
}

TEST_F(SequenceTable, ACancelReachesTheRecordsOfItsSession) {
    ht_val *one = insert("a", 1);
    ht_val *other = insert("b", 2);
    ht_val *two = insert("c", 1);
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_cancel(table, 1), 0);
    EXPECT_EQ(traces.lines(), (Traces{{6, "Canceling (session_id=1)"},
                                      {6, "match found, canceling (session_id=1)"},
                                      {6, "match found, canceling (session_id=1)"}}));
    for (const ht_val *val : {one, two}) {
        EXPECT_EQ(val->rc, 33);
        EXPECT_EQ(val->signaled, 1);
    }
    EXPECT_EQ(other->rc, 0);
    EXPECT_EQ(other->signaled, 0);
    EXPECT_EQ(ipc_seq_ht_find(table, "a"), one);
}

TEST_F(SequenceTable, ACancelOfAStrangersSessionIsFine) {
    ht_val *val = insert("a", 1);
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_cancel(table, 4294967295), 0);
    EXPECT_EQ(traces.lines(), (Traces{{6, "Canceling (session_id=4294967295)"}}));
    EXPECT_EQ(val->signaled, 0);
}

TEST_F(SequenceTable, ACancelGoesOnBehindAnEntryWithoutRecord) {
    ht_val *before = insert("a", 1);
    ASSERT_EQ(hashAdd(record(table).ht, "empty", nullptr), 0);
    ht_val *behind = insert("c", 1);
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_cancel(table, 1), 10000);
    EXPECT_EQ(traces.at(3), std::vector<std::string>{"Failed to get ht_val"});
    EXPECT_EQ(before->rc, 33);
    EXPECT_EQ(behind->rc, 33);
}

TEST_P(NoTable, HasNothingToCancel) {
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_cancel(table, 1), 0);
    EXPECT_EQ(traces.lines(),
              (Traces{{6, "Canceling (session_id=1)"}, {6, "HASHMAP ptr s->ht is NULL"}}));
}

TEST_F(SequenceTable, AllAreWokenWithTheirStatuses) {
    ht_val *one = insert("a", 1);
    ASSERT_EQ(hashAdd(record(table).ht, "empty", nullptr), 0);
    ht_val *two = insert("b", 2);
    two->rc = 33;
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_wake_all(table), 0);
    EXPECT_EQ(traces.lines(), (Traces{{6, "Waking up all the clients waiting on snd_rcv"},
                                      {6, "sync_snd_rcv(signal): wake all ht waiting threads"},
                                      {6, "sync_snd_rcv(signal): wake all ht waiting threads"}}));
    EXPECT_EQ(one->signaled, 1);
    EXPECT_EQ(one->rc, 0);
    EXPECT_EQ(two->signaled, 1);
    EXPECT_EQ(two->rc, 33);
}

TEST_P(NoTable, HasNobodyToWake) {
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_wake_all(table), 0);
    EXPECT_EQ(traces.lines(), (Traces{{6, "Waking up all the clients waiting on snd_rcv"},
                                      {6, "HASHMAP ptr s->ht is NULL"}}));
}

TEST_F(SequenceTable, ASessionIsWokenWithItsStatuses) {
    ht_val *one = insert("a", 1);
    ASSERT_EQ(hashAdd(record(table).ht, "empty", nullptr), 0);
    ht_val *other = insert("b", 2);
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_wake_session_id(table, 1), 0);
    EXPECT_EQ(traces.lines(), (Traces{{7, "ipc_sync_snd_rcv(signal): wake dst hdl callback"},
                                      {7, "ipc_sync_snd_rcv(signal): wake dst hdl callback"}}));
    EXPECT_EQ(one->signaled, 1);
    EXPECT_EQ(one->rc, 0);
    EXPECT_EQ(other->signaled, 0);
    EXPECT_EQ(ipc_seq_ht_wake_session_id(table, 3), 0);
}

TEST_P(NoTable, HasNoSessionToWake) {
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_wake_session_id(table, 1), 10000);
    EXPECT_EQ(traces.lines(), (Traces{{6, "GHashTable ptr s->ht is NULL"}}));
}

TEST_F(SequenceTable, ItsEndSignalsWhatIsInItAndLeavesIt) {
    ht_val *val = insert("a", 1);
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_destroy(table), 0);
    table = nullptr;
    EXPECT_EQ(traces.lines(), (Traces{{7, "sync_snd_rcv(signal)"}}));
    EXPECT_EQ(val->signaled, 1);
    EXPECT_EQ(val->rc, 0);
    EXPECT_EQ(val->session_id, 1u);
}

TEST_F(SequenceTable, ItsEndReportsAnEntryWithoutRecord) {
    ASSERT_EQ(hashAdd(record(table).ht, "empty", nullptr), 0);
    ht_val *val = insert("a", 1);
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_destroy(table), 0);
    table = nullptr;
    EXPECT_EQ(traces.lines(), (Traces{{3, "user data is NULL"},
                                      {3, "Hashtable item has no value"},
                                      {7, "sync_snd_rcv(signal)"}}));
    EXPECT_EQ(val->signaled, 1);
}

TEST_F(SequenceTable, WithoutItsHashTableItIsDestroyedToo) {
    hashCloseWithFunction(record(table).ht, nullptr);
    record(table).ht = nullptr;
    EXPECT_EQ(ipc_seq_ht_destroy(table), 0);
    table = nullptr;
}

TEST(NullSequenceTable, IsNotDestroyed) {
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_destroy(nullptr), 10000);
    EXPECT_TRUE(traces.lines().empty());
}

TEST(SequenceTableMemory, ThatRunsOutIsReportedAtEachStep) {
    oru::test::sweep_oom(
        [] {
            seq_ht_table *table = ipc_seq_ht_init(8);
            ht_val *val = ipc_seq_create_ht_val(1);
            char *key = util_build_key(7);
            const bool all = table != nullptr && val != nullptr && key != nullptr;
            const bool inserted = all && ipc_seq_ht_insert(table, key, val) == 0;
            EXPECT_EQ(!inserted, oru::test::oom_hit());
            if (inserted) {
                EXPECT_EQ(ipc_seq_ht_remove(table, key), 0);
            } else {
                ipc_seq_delete_ht_key(key);
                ipc_seq_delete_ht_val(val);
            }
            EXPECT_EQ(ipc_seq_ht_destroy(table), table != nullptr ? 0 : 10000);
        },
        {.at_least = 6});
}

}  // namespace
