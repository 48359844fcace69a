// What the sequence table asks of the thread layer, call by call: this program brings one that
// writes them down and can refuse.
#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <cstring>
#include <string>
#include <vector>

#include "oru/ipc_seq.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::Trace;
using oru::test::TraceCapture;
using Calls = std::vector<std::string>;

Calls calls;
const char *refused_name = "";

// The wait record that calls are about, null for any.
const ht_val *known = nullptr;

int32_t note(const char *verb, const oru_mtx_t *mutex) {
    calls.push_back(std::string(verb) + " " + mutex->name);
    return 0;
}

int32_t note(const char *verb, const oru_cond_t *condition) {
    const bool expected = known == nullptr || condition == &known->cond;
    calls.push_back(std::string(verb) + (expected ? " condition" : " another condition"));
    return 0;
}

}  // namespace

extern "C" {

int32_t oru_mtx_init(const char *name, oru_mtx_t *mutex, const void *attributes) {
    EXPECT_EQ(attributes, nullptr);
    std::strncpy(mutex->name, name, sizeof mutex->name - 1);
    note("init", mutex);
    return std::strcmp(name, refused_name) == 0 ? 11 : 0;
}
int32_t oru_mtx_destroy(oru_mtx_t *mutex) {
    return note("destroy", mutex);
}
int32_t oru_mtx_lock(oru_mtx_t *mutex) {
    return note("lock", mutex);
}
// The answer stands in the record before its lock is given back.
int32_t oru_mtx_unlock(oru_mtx_t *mutex) {
    if (known != nullptr && mutex == &known->lock) {
        calls.push_back("reply " + std::to_string(known->reply) + " rc " +
                        std::to_string(known->rc));
    }
    return note("unlock", mutex);
}
int32_t oru_cond_init(oru_cond_t *condition, const void *attributes) {
    EXPECT_EQ(attributes, nullptr);
    return note("init", condition);
}
int32_t oru_cond_destroy(oru_cond_t *condition) {
    return note("destroy", condition);
}
// Who is woken finds `signaled` set.
int32_t oru_cond_signal(oru_cond_t *condition) {
    if (known != nullptr) {
        EXPECT_EQ(known->signaled, 1);
    }
    return note("signal", condition);
}
}

namespace {

#define TABLE_LOCK "oru_ipc_seq_ht_mutex"
#define RECORD_LOCK "oru_ipc_snd_rcv_mutex"

class Recorded : public testing::Test {
  protected:
    Recorded() {
        ipc_seq_ht_insert(table, "a", val);
        known = val;
        calls.clear();
    }
    ~Recorded() override {
        known = nullptr;
        if (table != nullptr)
            ipc_seq_ht_destroy(table);
        ipc_seq_delete_ht_val(val);
        calls.clear();
    }

    // A signal under the table's lock, after which the record reads so.
    static Calls signalled(const char *reads) {
        return {"lock " TABLE_LOCK,    "lock " RECORD_LOCK, "signal condition", reads,
                "unlock " RECORD_LOCK, "unlock " TABLE_LOCK};
    }

    seq_ht_table *table = ipc_seq_ht_init(8);
    ht_val *val = ipc_seq_create_ht_val(1);
};

TEST_F(Recorded, ATableIsMadeUnderItsLock) {
    seq_ht_table *made = ipc_seq_ht_init(8);
    EXPECT_EQ(calls, (Calls{"init " TABLE_LOCK, "lock " TABLE_LOCK, "unlock " TABLE_LOCK}));
    calls.clear();
    EXPECT_EQ(ipc_seq_ht_destroy(made), 0);
    EXPECT_EQ(calls, (Calls{"lock " TABLE_LOCK, "unlock " TABLE_LOCK, "destroy " TABLE_LOCK}));
}

TEST_F(Recorded, ATableWhoseLockIsRefusedIsNotMade) {
    refused_name = TABLE_LOCK;
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_ht_init(8), nullptr);
    refused_name = "";
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "Failed to init mutex for seq hash table"}}));
    EXPECT_EQ(calls, (Calls{"init " TABLE_LOCK}));
}

TEST_F(Recorded, ATableWithoutMemoryGivesItsLockUp) {
    poolheap_fail_nth(2, 0);
    EXPECT_EQ(ipc_seq_ht_init(8), nullptr);
    poolheap_fail_off();
    EXPECT_EQ(calls, (Calls{"init " TABLE_LOCK, "lock " TABLE_LOCK, "unlock " TABLE_LOCK,
                            "destroy " TABLE_LOCK}));
}

TEST_F(Recorded, AWaitRecordIsMadeAndEndedWithLockAndCondition) {
    known = nullptr;
    ht_val *made = ipc_seq_create_ht_val(1);
    ipc_seq_delete_ht_val(made);
    EXPECT_EQ(calls, (Calls{"init " RECORD_LOCK, "init condition", "destroy condition",
                            "destroy " RECORD_LOCK}));
}

TEST_F(Recorded, AWaitRecordWhoseLockIsRefusedIsNotMade) {
    refused_name = RECORD_LOCK;
    TraceCapture traces;
    EXPECT_EQ(ipc_seq_create_ht_val(1), nullptr);
    refused_name = "";
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{{3, "Failed to initialize oru_ipc_snd_rcv_mutex"}}));
    EXPECT_EQ(calls, (Calls{"init " RECORD_LOCK}));
}

TEST_F(Recorded, KeysTakeNoLock) {
    ipc_seq_delete_ht_key(util_build_key(1));
    ipc_seq_delete_ht_key(util_build_key_from_str("a"));
    EXPECT_TRUE(calls.empty());
}

TEST_F(Recorded, InsertFindAndRemoveTakeTheTablesLock) {
    const Calls locked{"lock " TABLE_LOCK, "unlock " TABLE_LOCK};
    EXPECT_EQ(ipc_seq_ht_insert(table, "a", val), 10000);
    EXPECT_EQ(calls, locked);
    calls.clear();
    EXPECT_EQ(ipc_seq_ht_find(table, "a"), val);
    EXPECT_EQ(calls, locked);
    calls.clear();
    char key[] = "b";
    EXPECT_EQ(ipc_seq_ht_remove(table, key), 0);
    EXPECT_EQ(calls, locked);
}

TEST_F(Recorded, ARemovalEndsTheRecordUnderTheTablesLock) {
    known = nullptr;
    char *key = util_build_key(1);
    ipc_seq_ht_insert(table, key, ipc_seq_create_ht_val(1));
    calls.clear();
    EXPECT_EQ(ipc_seq_ht_remove(table, key), 0);
    EXPECT_EQ(calls, (Calls{"lock " TABLE_LOCK, "destroy condition", "destroy " RECORD_LOCK,
                            "unlock " TABLE_LOCK}));
}

TEST_F(Recorded, NullArgumentsTakeNoLock) {
    ipc_seq_ht_insert(table, nullptr, val);
    ipc_seq_ht_insert(table, "b", nullptr);
    ipc_seq_ht_find(table, nullptr);
    ipc_seq_ht_find_and_update(table, nullptr, 1);
    ipc_seq_ht_remove(table, nullptr);
    EXPECT_TRUE(calls.empty());
}

TEST_F(Recorded, AnAnswerIsStoredUnderBothLocks) {
    EXPECT_EQ(ipc_seq_ht_find_and_update(table, "a", 17), 0);
    EXPECT_EQ(calls, signalled("reply 17 rc 0"));
}

TEST_F(Recorded, ACancelIsStoredUnderBothLocks) {
    EXPECT_EQ(ipc_seq_ht_cancel(table, 1), 0);
    EXPECT_EQ(calls, signalled("reply 0 rc 33"));
}

TEST_F(Recorded, WakersSignalUnderBothLocks) {
    EXPECT_EQ(ipc_seq_ht_wake_all(table), 0);
    EXPECT_EQ(calls, signalled("reply 0 rc 0"));
    calls.clear();
    EXPECT_EQ(ipc_seq_ht_wake_session_id(table, 1), 0);
    EXPECT_EQ(calls, signalled("reply 0 rc 0"));
}

TEST_F(Recorded, StrangersSessionsAreLeftAlone) {
    const Calls locked{"lock " TABLE_LOCK, "unlock " TABLE_LOCK};
    EXPECT_EQ(ipc_seq_ht_cancel(table, 2), 0);
    EXPECT_EQ(calls, locked);
    calls.clear();
    EXPECT_EQ(ipc_seq_ht_wake_session_id(table, 2), 0);
    EXPECT_EQ(calls, locked);
}

TEST_F(Recorded, TheEndOfATableSignalsUnderBothLocks) {
    EXPECT_EQ(ipc_seq_ht_destroy(table), 0);
    table = nullptr;
    Calls wanted = signalled("reply 0 rc 0");
    wanted.push_back("destroy " TABLE_LOCK);
    EXPECT_EQ(calls, wanted);
}

}  // namespace
