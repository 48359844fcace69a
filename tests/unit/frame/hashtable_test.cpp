#include "oru/hashtable.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::Trace;
using oru::test::TraceCapture;

constexpr uint32_t kArrayTag = 0x2900043;

uint64_t live_blocks(uint32_t tag) {
    poolheap_stats_t stats{};
    poolheap_tag_stats(tag, &stats);
    return stats.live_blocks;
}

// Element functions of a caller. Elements that come back are overwritten, so that a table that
// looks at one again is found out.
int elements_out = 0;
bool elements_fail = false;

void *take_element() {
    if (elements_fail)
        return nullptr;
    ++elements_out;
    void *element = std::malloc(3 * sizeof(void *));
    std::memset(element, 0x5a, 3 * sizeof(void *));
    return element;
}

void give_element(void *element) {
    --elements_out;
    std::memset(element, 0x5a, 3 * sizeof(void *));
    std::free(element);
}

void *number(intptr_t n) {
    return reinterpret_cast<void *>(n);
}

// The record, and an element, as outside code compiled apart sees them.
struct ElementRecord {
    void *key;
    void *value;
    ElementRecord *next;
};

struct TableRecord {
    ElementRecord *buckets;
    uint32_t size;
    uint32_t (*hash)(const void *key);
    int32_t (*match)(const void *a, const void *b);
    void *(*alloc_elem)();
    void (*free_elem)(void *element);
    uint32_t key_kind;
    uint32_t dynamic;
    float target_load;
    float grow_load;
    uint32_t initial_size;
    uint32_t max_size;
    ElementRecord *walking;
    uint32_t conflicts;
    uint32_t entries;
};

TableRecord &record(ORUHashtable *table) {
    return *reinterpret_cast<TableRecord *>(table);
}

struct Walk {
    std::function<int32_t(const char *key, intptr_t value)> body;
    static int32_t call(void *key, void *value, void *context, void *element) {
        EXPECT_NE(element, nullptr);
        return static_cast<Walk *>(context)->body(static_cast<const char *>(key),
                                                  reinterpret_cast<intptr_t>(value));
    }
};

int32_t walk(ORUHashtable *table, std::function<int32_t(const char *, intptr_t)> body) {
    Walk context{std::move(body)};
    return oru_hashtable_walk(table, &context, Walk::call);
}

std::vector<std::string> keys_of(ORUHashtable *table) {
    std::vector<std::string> keys;
    walk(table, [&](const char *key, intptr_t) {
        keys.push_back(key);
        return 1;
    });
    return keys;
}

class Hashtable : public testing::Test {
  protected:
    ~Hashtable() override {
        if (table != nullptr) {
            EXPECT_EQ(oru_hashtable_close(table, nullptr, nullptr), 0);
        }
        EXPECT_EQ(elements_out, 0);
    }
    void remake(ORUHashtable *other) {
        oru_hashtable_close(table, nullptr, nullptr);
        table = other;
    }
    intptr_t find(const char *key) {
        void *value = nullptr;
        return oru_hashtable_search(table, key, &value) == 0 ? reinterpret_cast<intptr_t>(value)
                                                             : -1;
    }

    ORUHashtable *table = oru_hashtable_create(1, 8, nullptr, nullptr);
};

// One bucket, so that all entries stand in one chain.
class Chain : public Hashtable {
  protected:
    Chain() {
        remake(oru_hashtable_create(1, 1, take_element, give_element));
        for (const char *key : {"a", "b", "c", "d"})
            oru_hashtable_insert(table, key, number(key[0]));
    }
};

TEST_F(Hashtable, WhatIsInsertedIsFoundUntilItIsRemoved) {
    EXPECT_EQ(oru_hashtable_insert(table, "one", number(1)), 0);
    EXPECT_EQ(oru_hashtable_insert(table, "two", number(2)), 0);
    EXPECT_EQ(oru_hashtable_num_entries(table), 2);
    EXPECT_EQ(find("one"), 1);
    EXPECT_EQ(find("two"), 2);
    EXPECT_EQ(find("three"), -1);

    void *key = nullptr;
    void *value = nullptr;
    EXPECT_EQ(oru_hashtable_remove(table, "one", &key, &value), 0);
    EXPECT_STREQ(static_cast<char *>(key), "one");
    EXPECT_EQ(value, number(1));
    EXPECT_EQ(find("one"), -1);
    EXPECT_EQ(oru_hashtable_remove(table, "one", nullptr, nullptr), 2);
    EXPECT_EQ(oru_hashtable_remove(table, "two", nullptr, nullptr), 0);
    EXPECT_EQ(oru_hashtable_num_entries(table), 0);
}

TEST_F(Hashtable, AValueMayBeNull) {
    oru_hashtable_insert(table, "key", nullptr);
    void *value = this;
    EXPECT_EQ(oru_hashtable_search(table, "key", &value), 0);
    EXPECT_EQ(value, nullptr);
}

TEST_F(Hashtable, ASearchThatFindsNothingLeavesItsOutput) {
    void *value = this;
    EXPECT_EQ(oru_hashtable_search(table, "key", &value), 2);
    EXPECT_EQ(value, this);
}

TEST_F(Hashtable, AnEqualTextInAnotherBufferIsADuplicate) {
    const char key[] = "key";
    const char same[] = "key";
    EXPECT_EQ(oru_hashtable_insert(table, key, number(1)), 0);
    EXPECT_EQ(oru_hashtable_insert(table, key, number(2)), 17);
    EXPECT_EQ(oru_hashtable_insert(table, same, number(2)), 17);
    EXPECT_EQ(oru_hashtable_num_entries(table), 1);
    EXPECT_EQ(find("key"), 1);

    EXPECT_EQ(oru_hashtable_insert_quick(table, same, number(2)), 0);
    EXPECT_EQ(oru_hashtable_num_entries(table), 2);
    EXPECT_TRUE(find("key") == 1 || find("key") == 2);
}

TEST_F(Hashtable, TextsAboveSevenBitsAreKeysToo) {
    EXPECT_EQ(oru_hashtable_insert(table, "gr\xc3\xbc\xc3\x9f", number(1)), 0);
    EXPECT_EQ(find("gr\xc3\xbc\xc3\x9f"), 1);
    EXPECT_EQ(find("gr\xc3\xbc\xc3\x9e"), -1);
}

TEST_F(Hashtable, NullArgumentsAreBadAndInsertsTellWhich) {
    void *value = nullptr;
    TraceCapture traces;
    EXPECT_EQ(oru_hashtable_insert(nullptr, "key", this), 22);
    EXPECT_EQ(oru_hashtable_insert(table, nullptr, this), 22);
    EXPECT_EQ(oru_hashtable_insert_quick(nullptr, nullptr, this), 22);
    EXPECT_EQ(oru_hashtable_insert_quick(table, nullptr, this), 22);
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{
                  {3, "hashtable null"}, {3, "null key"}, {3, "hashtable null"}, {3, "null key"}}));
    traces.clear();
    EXPECT_EQ(oru_hashtable_search(nullptr, "key", &value), 22);
    EXPECT_EQ(oru_hashtable_search(table, nullptr, &value), 22);
    EXPECT_EQ(oru_hashtable_search(table, "key", nullptr), 22);
    EXPECT_EQ(oru_hashtable_remove(nullptr, "key", nullptr, nullptr), 22);
    EXPECT_EQ(oru_hashtable_remove(table, nullptr, nullptr, nullptr), 22);
    EXPECT_EQ(oru_hashtable_walk(nullptr, nullptr, Walk::call), 22);
    EXPECT_EQ(oru_hashtable_walk(table, nullptr, nullptr), 22);
    EXPECT_EQ(oru_hashtable_close(nullptr, nullptr, nullptr), 22);
    void *no_buckets[32] = {};
    EXPECT_EQ(oru_hashtable_close(reinterpret_cast<ORUHashtable *>(no_buckets), nullptr, nullptr),
              22);
    EXPECT_TRUE(traces.lines().empty());
}

TEST_F(Hashtable, ReadingNeedsATable) {
    EXPECT_ASSERTION(oru_hashtable_num_entries(nullptr), "table");
    EXPECT_ASSERTION(oru_hashtable_get_size(nullptr), "table");
    EXPECT_ASSERTION(oru_hashtable_get_conflicts(nullptr), "table");
    EXPECT_ASSERTION(oru_hashtable_get_load_factor(nullptr), "table");
}

TEST_F(Hashtable, AnEntryInAnEmptyBucketNeedsNoAllocation) {
    poolheap_fail_nth(0, 0);
    EXPECT_EQ(oru_hashtable_insert(table, "key", this), 0);
    EXPECT_EQ(poolheap_fail_calls(), 0u);
    EXPECT_EQ(oru_hashtable_remove(table, "key", nullptr, nullptr), 0);
    EXPECT_EQ(oru_hashtable_insert_quick(table, "key", this), 0);
    EXPECT_EQ(poolheap_fail_calls(), 0u);
    poolheap_fail_off();
}

TEST_F(Hashtable, BucketsAndElementsCarryTheirTag) {
    EXPECT_EQ(live_blocks(kArrayTag), 1u);
    remake(oru_hashtable_create(1, 1, nullptr, nullptr));
    oru_hashtable_insert(table, "a", nullptr);
    EXPECT_EQ(live_blocks(kArrayTag), 1u);
    oru_hashtable_insert(table, "b", nullptr);
    EXPECT_EQ(live_blocks(kArrayTag), 2u);
    oru_hashtable_insert_quick(table, "c", nullptr);
    EXPECT_EQ(live_blocks(kArrayTag), 3u);
    oru_hashtable_remove(table, "a", nullptr, nullptr);
    EXPECT_EQ(live_blocks(kArrayTag), 2u);
}

TEST_F(Hashtable, AKindThatDoesNotExistIsFatalAtTheFirstKey) {
    remake(oru_hashtable_create(7, 8, nullptr, nullptr));
    ASSERT_NE(table, nullptr);
    void *value = nullptr;
    EXPECT_FATAL(oru_hashtable_insert(table, "key", nullptr), "default case");
    EXPECT_FATAL(oru_hashtable_insert_quick(table, "key", nullptr), "default case");
    EXPECT_FATAL(oru_hashtable_search(table, "key", &value), "default case");
    EXPECT_FATAL(oru_hashtable_remove(table, "key", nullptr, nullptr), "default case");
}

TEST_F(Hashtable, CustomKeysGoThroughTheTablesFunctions) {
    remake(
        oru_hashtable_create_custom(4, oru_hash_int_calc, oru_hash_int_matcher, nullptr, nullptr));
    int32_t keys[20];
    for (int32_t i = 0; i < 20; ++i) {
        keys[i] = i * 1000;
        EXPECT_EQ(oru_hashtable_insert(table, &keys[i], number(i)), 0);
    }
    const int32_t again = 7000;
    EXPECT_EQ(oru_hashtable_insert(table, &again, nullptr), 17);
    void *value = nullptr;
    EXPECT_EQ(oru_hashtable_search(table, &again, &value), 0);
    EXPECT_EQ(value, number(7));
    void *key = nullptr;
    EXPECT_EQ(oru_hashtable_remove(table, &again, &key, nullptr), 0);
    EXPECT_EQ(key, &keys[7]);
    EXPECT_EQ(oru_hashtable_search(table, &again, &value), 2);
    EXPECT_EQ(oru_hashtable_num_entries(table), 19);
}

TEST_F(Hashtable, TheSamePointerIsTheSameKeyWhateverTheMatchSays) {
    remake(oru_hashtable_create_custom(
        1, [](const void *) { return 0u; }, [](const void *, const void *) { return 0; }, nullptr,
        nullptr));
    const char keys[2] = "";
    EXPECT_EQ(oru_hashtable_insert(table, &keys[0], number(1)), 0);
    EXPECT_EQ(oru_hashtable_insert(table, &keys[1], number(2)), 0);
    EXPECT_EQ(oru_hashtable_insert(table, &keys[1], number(3)), 17);
    void *value = nullptr;
    EXPECT_EQ(oru_hashtable_search(table, &keys[1], &value), 0);
    EXPECT_EQ(value, number(2));
    EXPECT_EQ(oru_hashtable_remove(table, &keys[1], nullptr, nullptr), 0);
    EXPECT_EQ(oru_hashtable_num_entries(table), 1);
}

TEST_F(Hashtable, TheRecordFollowsTheTable) {
    oru_hashtable_insert(table, "key", number(7));
    const TableRecord &fields = record(table);
    EXPECT_EQ(fields.size, 8u);
    EXPECT_EQ(fields.hash, nullptr);
    EXPECT_EQ(fields.match, nullptr);
    EXPECT_NE(fields.alloc_elem, nullptr);
    EXPECT_NE(fields.free_elem, nullptr);
    EXPECT_EQ(fields.key_kind, 1u);
    EXPECT_EQ(fields.dynamic, 0u);
    EXPECT_EQ(fields.walking, nullptr);
    EXPECT_EQ(fields.conflicts, 0u);
    EXPECT_EQ(fields.entries, 1u);
    for (uint32_t i = 0; i < 8; ++i) {
        const bool used = i == oru_hash_str_calc("key") % 8;
        EXPECT_EQ(fields.buckets[i].key != nullptr, used);
        EXPECT_EQ(fields.buckets[i].value, used ? number(7) : nullptr);
        EXPECT_EQ(fields.buckets[i].next, nullptr);
    }
    walk(table, [&](const char *, intptr_t) {
        EXPECT_EQ(fields.walking, &fields.buckets[oru_hash_str_calc("key") % 8]);
        return 1;
    });
    EXPECT_EQ(fields.walking, nullptr);
}

TEST_F(Hashtable, TheRecordOfAGrowingOneHasItsLoads) {
    remake(oru_hashtable_dynamic_create(1, 16, 100, take_element, give_element));
    const TableRecord &fields = record(table);
    EXPECT_EQ(fields.size, 16u);
    EXPECT_EQ(fields.alloc_elem, take_element);
    EXPECT_EQ(fields.free_elem, give_element);
    EXPECT_EQ(fields.dynamic, 1u);
    EXPECT_EQ(fields.target_load, 0.5F);
    EXPECT_EQ(fields.grow_load, 4.0F);
    EXPECT_EQ(fields.initial_size, 16u);
    EXPECT_EQ(fields.max_size, 100u);
    EXPECT_EQ(fields.entries, 0u);
}

TEST_F(Hashtable, TheLoadIsEntriesByBuckets) {
    EXPECT_EQ(oru_hashtable_get_size(table), 8);
    EXPECT_EQ(oru_hashtable_get_load_factor(table), 0.0);
    oru_hashtable_insert(table, "a", nullptr);
    oru_hashtable_insert(table, "b", nullptr);
    oru_hashtable_insert(table, "c", nullptr);
    EXPECT_EQ(oru_hashtable_get_load_factor(table), 0.375);
}

TEST_F(Hashtable, AFixedTableKeepsItsSize) {
    remake(oru_hashtable_create(1, 1, nullptr, nullptr));
    std::vector<std::string> keys;
    for (int i = 0; i < 100; ++i)
        keys.push_back("key" + std::to_string(i));
    for (const std::string &key : keys)
        EXPECT_EQ(oru_hashtable_insert(table, key.c_str(), nullptr), 0);
    EXPECT_EQ(oru_hashtable_get_size(table), 1);
    EXPECT_EQ(oru_hashtable_get_conflicts(table), 99);
    EXPECT_EQ(oru_hashtable_num_entries(table), 100);
}

TEST_F(Chain, GrowsAtItsEnd) {
    EXPECT_EQ(keys_of(table), (std::vector<std::string>{"a", "b", "c", "d"}));
    EXPECT_EQ(oru_hashtable_get_conflicts(table), 3);
    EXPECT_EQ(elements_out, 3);
}

TEST_F(Chain, AQuickInsertStandsBehindTheBucketAndIsNoConflict) {
    EXPECT_EQ(oru_hashtable_insert_quick(table, "e", nullptr), 0);
    EXPECT_EQ(keys_of(table), (std::vector<std::string>{"a", "e", "b", "c", "d"}));
    EXPECT_EQ(oru_hashtable_get_conflicts(table), 3);
    EXPECT_EQ(oru_hashtable_num_entries(table), 5);
    // Its removal is counted all the same.
    oru_hashtable_remove(table, "e", nullptr, nullptr);
    EXPECT_EQ(oru_hashtable_get_conflicts(table), 2);
}

TEST_F(Chain, RemovalBehindTheBucketIsOneConflictLess) {
    EXPECT_EQ(oru_hashtable_remove(table, "c", nullptr, nullptr), 0);
    EXPECT_EQ(keys_of(table), (std::vector<std::string>{"a", "b", "d"}));
    EXPECT_EQ(oru_hashtable_get_conflicts(table), 2);
    EXPECT_EQ(oru_hashtable_remove(table, "d", nullptr, nullptr), 0);
    EXPECT_EQ(keys_of(table), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(elements_out, 1);
}

TEST_F(Chain, RemovalOfTheBucketMovesTheNextOneUp) {
    EXPECT_EQ(oru_hashtable_remove(table, "a", nullptr, nullptr), 0);
    EXPECT_EQ(keys_of(table), (std::vector<std::string>{"b", "c", "d"}));
    EXPECT_EQ(oru_hashtable_get_conflicts(table), 3);  // unchanged
    EXPECT_EQ(elements_out, 2);
    EXPECT_EQ(find("b"), 'b');
    for (const char *key : {"b", "c", "d"})
        EXPECT_EQ(oru_hashtable_remove(table, key, nullptr, nullptr), 0);
    EXPECT_EQ(elements_out, 0);
    EXPECT_EQ(oru_hashtable_num_entries(table), 0);
    EXPECT_EQ(oru_hashtable_insert(table, "a", number(1)), 0);
    EXPECT_EQ(find("a"), 1);
}

TEST_F(Chain, AnElementThatCannotBeHadIsReported) {
    elements_fail = true;
    TraceCapture traces;
    EXPECT_EQ(oru_hashtable_insert(table, "e", nullptr), 12);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "failed to alloc elem"}}));
    traces.clear();
    EXPECT_EQ(oru_hashtable_insert_quick(table, "e", nullptr), 12);
    EXPECT_TRUE(traces.lines().empty());
    elements_fail = false;
    EXPECT_EQ(oru_hashtable_num_entries(table), 4);
    EXPECT_EQ(oru_hashtable_get_conflicts(table), 3);
    EXPECT_EQ(find("e"), -1);
}

TEST_F(Chain, AWalkEndsWhenTheFunctionGivesZero) {
    int visits = 0;
    EXPECT_EQ(walk(table, [&](const char *, intptr_t) { return ++visits < 2; }), 0);
    EXPECT_EQ(visits, 2);
    EXPECT_EQ(oru_hashtable_insert(table, "e", nullptr), 0);  // no walk runs any more
}

TEST_F(Chain, AWalkHandsOnKeyValueAndContext) {
    std::string seen;
    EXPECT_EQ(walk(table,
                   [&](const char *key, intptr_t value) {
                       EXPECT_EQ(value, key[0]);
                       seen += key;
                       return 1;
                   }),
              0);
    EXPECT_EQ(seen, "abcd");
}

TEST_F(Chain, DuringAWalkNothingIsInserted) {
    walk(table, [&](const char *, intptr_t) {
        EXPECT_EQ(oru_hashtable_insert(table, "e", nullptr), 1);
        EXPECT_EQ(oru_hashtable_insert_quick(table, "e", nullptr), 1);
        return 1;
    });
    EXPECT_EQ(oru_hashtable_num_entries(table), 4);
}

TEST_F(Chain, DuringAWalkOnlyTheEntryAtHandIsRemoved) {
    walk(table, [&](const char *key, intptr_t) {
        const std::string at_hand = key;
        EXPECT_EQ(oru_hashtable_remove(table, at_hand == "a" ? "b" : "a", nullptr, nullptr), 1);
        EXPECT_EQ(oru_hashtable_remove(table, "no such key", nullptr, nullptr), 1);
        EXPECT_EQ(oru_hashtable_insert(table, nullptr, nullptr), 22);
        if (at_hand == "c") {
            EXPECT_EQ(oru_hashtable_remove(table, "c", nullptr, nullptr), 0);
            EXPECT_EQ(oru_hashtable_remove(table, "c", nullptr, nullptr), 1);
            EXPECT_EQ(oru_hashtable_remove(table, "d", nullptr, nullptr), 1);
            EXPECT_EQ(oru_hashtable_insert(table, "e", nullptr), 1);
        }
        return 1;
    });
    EXPECT_EQ(keys_of(table), (std::vector<std::string>{"a", "b", "d"}));
    EXPECT_EQ(oru_hashtable_remove(table, "a", nullptr, nullptr), 0);
}

TEST_F(Chain, AWalkMayRemoveEveryEntryAndMeetsEachOnce) {
    std::string seen;
    walk(table, [&](const char *key, intptr_t) {
        seen += key;
        void *value = nullptr;
        EXPECT_EQ(oru_hashtable_remove(table, std::string(key).c_str(), nullptr, &value), 0);
        EXPECT_EQ(value, number(key[0]));
        return 1;
    });
    EXPECT_EQ(seen, "abcd");
    EXPECT_EQ(oru_hashtable_num_entries(table), 0);
    EXPECT_EQ(elements_out, 0);
}

TEST_F(Chain, AnySubsetMayBeRemovedInAWalk) {
    for (unsigned subset = 0; subset < 16; ++subset) {
        remake(oru_hashtable_create(1, 1, take_element, give_element));
        for (const char *key : {"a", "b", "c", "d"})
            oru_hashtable_insert(table, key, number(key[0]));
        std::string seen;
        std::string kept;
        walk(table, [&](const char *key, intptr_t) {
            seen += key;
            if ((subset >> (key[0] - 'a') & 1) != 0) {
                EXPECT_EQ(oru_hashtable_remove(table, key, nullptr, nullptr), 0);
            } else {
                kept += key;
            }
            return 1;
        });
        EXPECT_EQ(seen, "abcd");
        std::string left;
        for (const std::string &key : keys_of(table))
            left += key;
        EXPECT_EQ(left, kept);
    }
}

TEST_F(Chain, AfterTheBucketsRemovalTheOneMovedUpIsNotAtHandYet) {
    walk(table, [&](const char *key, intptr_t) {
        if (key[0] == 'a') {
            EXPECT_EQ(oru_hashtable_remove(table, "a", nullptr, nullptr), 0);
            EXPECT_EQ(oru_hashtable_remove(table, "b", nullptr, nullptr), 1);
        }
        return 1;
    });
    EXPECT_EQ(keys_of(table), (std::vector<std::string>{"b", "c", "d"}));
}

TEST_F(Chain, OfEqualKeysTheEntryAtHandIsRemoved) {
    oru_hashtable_insert_quick(table, "a", number(2));  // behind the first one
    oru_hashtable_insert_quick(table, "a", number(3));  // between the two
    std::vector<intptr_t> left;
    walk(table, [&](const char *key, intptr_t value) {
        if (value == 3) {
            void *removed = nullptr;
            EXPECT_EQ(oru_hashtable_remove(table, "a", nullptr, &removed), 0);
            EXPECT_EQ(removed, number(3));
        } else if (key[0] == 'a') {
            left.push_back(value);
        }
        return 1;
    });
    EXPECT_EQ(left, (std::vector<intptr_t>{'a', 2}));
    EXPECT_EQ(keys_of(table), (std::vector<std::string>{"a", "a", "b", "c", "d"}));
    EXPECT_EQ(find("a"), 'a');
}

TEST_F(Chain, AWalkInsideAWalkIsRefused) {
    int visits = 0;
    walk(table, [&](const char *, intptr_t) {
        ++visits;
        EXPECT_EQ(walk(table, [](const char *, intptr_t) { return 1; }), 1);
        EXPECT_EQ(oru_hashtable_insert(table, "e", nullptr), 1);
        return 1;
    });
    EXPECT_EQ(visits, 4);
}

TEST_F(Chain, ClosingHandsOutEveryEntry) {
    std::string seen;
    EXPECT_EQ(oru_hashtable_close(table, &seen,
                                  [](void *key, void *value, void *context) {
                                      auto *out = static_cast<std::string *>(context);
                                      *out += static_cast<const char *>(key);
                                      EXPECT_EQ(value, number(*static_cast<const char *>(key)));
                                  }),
              0);
    EXPECT_EQ(seen, "abcd");
    EXPECT_EQ(elements_out, 0);
    table = nullptr;
}

TEST_F(Hashtable, KeysMayBeFreedWhileItIsClosed) {
    for (int i = 0; i < 20; ++i) {
        char *key = ph_strdup_named(0x2900027, ("key" + std::to_string(i)).c_str());
        oru_hashtable_insert(table, key, nullptr);
    }
    oru_hashtable_close(table, nullptr, [](void *key, void *, void *) { ph_free_named(key); });
    table = nullptr;
    EXPECT_EQ(live_blocks(0x2900027), 0u);
}

TEST_F(Hashtable, AWalkRunsBucketByBucket) {
    std::vector<std::string> keys;
    for (int i = 0; i < 40; ++i)
        keys.push_back("key" + std::to_string(i));
    for (const std::string &key : keys)
        oru_hashtable_insert(table, key.c_str(), nullptr);
    const std::vector<std::string> walked = keys_of(table);
    EXPECT_EQ(walked.size(), 40u);
    EXPECT_TRUE(std::is_sorted(walked.begin(), walked.end(), [](const auto &a, const auto &b) {
        return oru_hash_str_calc(a.c_str()) % 8 < oru_hash_str_calc(b.c_str()) % 8;
    }));
}

class Growing : public Hashtable {
  protected:
    void make(uint32_t size, uint32_t max_size) {
        remake(oru_hashtable_dynamic_create(1, size, max_size, take_element, give_element));
    }
    // Adds entries until there are `count`; gives the result of the last insert.
    int32_t fill(size_t count) {
        int32_t rc = -1;
        while (keys.size() < count) {
            keys.push_back(std::make_unique<std::string>("key" + std::to_string(keys.size())));
            rc = oru_hashtable_insert(table, keys.back()->c_str(),
                                      number(static_cast<intptr_t>(keys.size())));
        }
        return rc;
    }
    void expect_all() {
        for (size_t i = 0; i < keys.size(); ++i) {
            const std::string copy = *keys[i];
            EXPECT_EQ(find(copy.c_str()), static_cast<intptr_t>(i + 1)) << copy;
        }
        const auto walked = keys_of(table);
        EXPECT_EQ(walked.size(), keys.size());
        EXPECT_EQ(std::set(walked.begin(), walked.end()).size(), keys.size());
    }
    std::vector<std::unique_ptr<std::string>> keys;
};

TEST_F(Growing, GoesFrom64To1024AtTheInsertThatSees256) {
    make(64, 4096);
    fill(256);
    EXPECT_EQ(oru_hashtable_get_size(table), 64);
    const int32_t conflicts = oru_hashtable_get_conflicts(table);
    EXPECT_GE(conflicts, 192);
    EXPECT_EQ(elements_out, conflicts);

    void *value = nullptr;
    EXPECT_EQ(oru_hashtable_search(table, "key256", &value), 2);
    EXPECT_EQ(fill(257), 0);
    EXPECT_EQ(oru_hashtable_get_size(table), 1024);
    EXPECT_EQ(oru_hashtable_num_entries(table), 257);
    EXPECT_LE(oru_hashtable_get_conflicts(table) - conflicts, 1);  // left as it was
    EXPECT_GE(oru_hashtable_get_conflicts(table), conflicts);
    EXPECT_LT(elements_out, conflicts);  // elements went back
    expect_all();
}

// All in one chain of the smaller table, beside an empty bucket: the new array has one chain too,
// in which each entry stands directly behind the bucket, so all but the first are turned around.
TEST_F(Growing, MovesAChainElementByElement) {
    remake(oru_hashtable_dynamic_create(0, 2, 16, take_element, give_element));
    TableRecord &fields = record(table);
    fields.hash = [](const void *) { return 1u; };
    fields.match = [](const void *a, const void *b) { return int32_t{a == b}; };
    static const char *const texts[] = {"a", "b", "c", "d", "e", "f", "g", "h", "i"};
    for (const char *text : texts)
        EXPECT_EQ(oru_hashtable_insert(table, text, nullptr), 0);
    EXPECT_EQ(oru_hashtable_get_size(table), 16);
    EXPECT_EQ(fields.buckets[0].key, nullptr);
    EXPECT_EQ(keys_of(table),
              (std::vector<std::string>{"a", "h", "g", "f", "e", "d", "c", "b", "i"}));
    EXPECT_EQ(oru_hashtable_get_conflicts(table), 8);
    EXPECT_EQ(elements_out, 8);  // the chained ones moved along
}

TEST_F(Growing, QuickInsertsLetItGrowToo) {
    make(64, 4096);
    fill(256);
    EXPECT_EQ(oru_hashtable_insert_quick(table, "quick", number(1)), 0);
    EXPECT_EQ(oru_hashtable_get_size(table), 1024);
    EXPECT_EQ(find("quick"), 1);
}

TEST_F(Growing, StopsAtItsBound) {
    make(64, 256);
    fill(257);
    EXPECT_EQ(oru_hashtable_get_size(table), 256);
    fill(1400);
    EXPECT_EQ(oru_hashtable_get_size(table), 256);
    expect_all();
}

TEST_F(Growing, DoesNotWhenTheDoubledSizeIsAboveItsBound) {
    make(64, 100);
    fill(600);
    EXPECT_EQ(oru_hashtable_get_size(table), 64);
    expect_all();
}

TEST_F(Growing, NeverWhenTheBoundIsItsSize) {
    make(4, 4);
    fill(100);
    EXPECT_EQ(oru_hashtable_get_size(table), 4);
    EXPECT_EQ(oru_hashtable_get_load_factor(table), 25.0);
}

TEST_F(Growing, NeverWhenTheBoundIsBelowItsSize) {
    make(4, 2);
    fill(100);
    EXPECT_EQ(oru_hashtable_get_size(table), 4);
}

TEST_F(Growing, ChecksBeforeItLooksForADuplicate) {
    make(1, 64);
    fill(4);
    EXPECT_EQ(oru_hashtable_get_size(table), 1);
    EXPECT_EQ(oru_hashtable_insert(table, "key0", nullptr), 17);
    EXPECT_EQ(oru_hashtable_get_size(table), 16);  // 4 / 8 is not below 0.5
    EXPECT_EQ(oru_hashtable_num_entries(table), 4);
    expect_all();
}

TEST_F(Growing, WithoutMemoryTheInsertDoesNotHappen) {
    make(1, 64);
    fill(4);
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_hashtable_insert(table, "more", nullptr), 12);
    poolheap_fail_off();
    EXPECT_EQ(oru_hashtable_get_size(table), 1);
    expect_all();
    EXPECT_EQ(oru_hashtable_insert(table, "more", number(9)), 0);
    EXPECT_EQ(oru_hashtable_get_size(table), 16);
    EXPECT_EQ(find("more"), 9);
}

uint32_t scattered = 0;

TEST_F(Growing, ACopyThatFailsIsFatal) {
    remake(oru_hashtable_dynamic_create(0, 2, 64, take_element, give_element));
    // A growing table has no functions of its own. These scatter keys anew, so that entries of two
    // buckets meet in one, which needs an element more.
    TableRecord &fields = record(table);
    fields.hash = [](const void *) { return scattered; };
    fields.match = [](const void *a, const void *b) { return int32_t{a == b}; };
    static const char places[9] = "";
    for (uint32_t i = 0; i < 8; ++i) {
        scattered = i % 2;
        ASSERT_EQ(oru_hashtable_insert(table, places + i, nullptr), 0);
    }
    EXPECT_FATAL(
        {
            elements_fail = true;
            oru_hashtable_insert(table, places + 8, nullptr);
        },
        "copy failed");
    const int elements = elements_out;
    EXPECT_EQ(oru_hashtable_insert(table, places + 8, nullptr), 0);
    EXPECT_EQ(elements_out, elements + 2);  // one for the copy, one for the new entry
    EXPECT_EQ(oru_hashtable_num_entries(table), 9);
}

TEST(HashtableMaking, OneElementFunctionAloneIsInvalid) {
    char takes[100];
    char gives[100];
    std::snprintf(takes, sizeof takes, "Invalid memory management functions alloc %p free (nil)",
                  reinterpret_cast<void *>(take_element));
    std::snprintf(gives, sizeof gives, "Invalid memory management functions alloc (nil) free %p",
                  reinterpret_cast<void *>(give_element));
    TraceCapture traces;
    EXPECT_EQ(oru_hashtable_create(1, 8, take_element, nullptr), nullptr);
    EXPECT_EQ(oru_hashtable_create(1, 8, nullptr, give_element), nullptr);
    EXPECT_EQ(oru_hashtable_create_custom(8, oru_hash_int_calc, oru_hash_int_matcher, take_element,
                                          nullptr),
              nullptr);
    EXPECT_EQ(oru_hashtable_dynamic_create(1, 8, 16, nullptr, give_element), nullptr);
    EXPECT_EQ(oru_hashtable_dynamic_create(1, 8, 16, nullptr, nullptr), nullptr);
    EXPECT_EQ(
        traces.lines(),
        (std::vector<Trace>{{3, takes},
                            {3, gives},
                            {3, takes},
                            {3, gives},
                            {3, "Invalid memory management functions alloc (nil) free (nil)"}}));
}

TEST(HashtableMaking, NeedsMemoryForTheTableAndItsBuckets) {
    TraceCapture traces;
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_hashtable_create(1, 8, nullptr, nullptr), nullptr);
    poolheap_fail_nth(2, 0);
    EXPECT_EQ(
        oru_hashtable_create_custom(8, oru_hash_int_calc, oru_hash_int_matcher, nullptr, nullptr),
        nullptr);
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_hashtable_dynamic_create(1, 8, 16, take_element, give_element), nullptr);
    poolheap_fail_off();
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "Failed to allocate table"},
                                                  {3, "Failed to allocate hashtable bucket array"},
                                                  {3, "Failed to allocate table"}}));
}

TEST(HashtableFatal, ARecordThatIsNotOfThePool) {
    EXPECT_FATAL(
        {
            ORUHashtable *table = oru_hashtable_create(1, 8, nullptr, nullptr);
            init_chunk_poolheap_oru_hashtable(8, 0);
            oru_hashtable_close(table, nullptr, nullptr);
        },
        "Failed to free ##name from chunk poolheap_chunk_##type");
}

// Rehashing may need an element for the copy, without which there is no way back.
TEST(HashtableMemory, GrowthMayFail) {
    static const auto take = [] { return ph_calloc_named(kArrayTag, 1, sizeof(ElementRecord)); };
    static const auto give = [](void *element) { ph_free_named(element); };
    oru::test::sweep_oom(
        [] {
            ORUHashtable *table = oru_hashtable_dynamic_create(1, 2, 64, take, give);
            if (table == nullptr)
                return;
            std::vector<std::string> keys(100);
            int32_t added = 0;
            for (size_t i = 0; i < keys.size(); ++i) {
                keys[i] = "key" + std::to_string(i);
                const int32_t rc = oru_hashtable_insert(table, keys[i].c_str(), number(1));
                EXPECT_TRUE(rc == 0 || (rc == 12 && oru::test::oom_hit()));
                added += rc == 0;
            }
            EXPECT_EQ(oru_hashtable_num_entries(table), added);
            EXPECT_EQ(keys_of(table).size(), static_cast<size_t>(added));
            EXPECT_EQ(oru_hashtable_close(table, nullptr, nullptr), 0);
        },
        {.promised_deaths = {"copy failed"}, .at_least = 10});
    oru::test::sweep_oom(
        [] {
            ORUHashtable *table = oru_hashtable_create_custom(
                1, oru_hash_int_calc, oru_hash_int_matcher, nullptr, nullptr);
            if (table == nullptr)
                return;
            const int32_t keys[] = {1, 2, 3};
            int32_t added = 0;
            for (const int32_t &key : keys)
                added += oru_hashtable_insert_quick(table, &key, nullptr) == 0;
            EXPECT_EQ(oru_hashtable_num_entries(table), added);
            EXPECT_EQ(oru_hashtable_close(table, nullptr, nullptr), 0);
        },
        {.promised_deaths = {}, .at_least = 4});
}

TEST(HashtableMemory, EveryAllocationMayFail) {
    oru::test::sweep_oom(
        [] {
            ORUHashtable *table = oru_hashtable_create(1, 1, nullptr, nullptr);
            if (table == nullptr)
                return;
            int32_t added = 0;
            for (const char *key : {"a", "b", "c"}) {
                const int32_t rc = oru_hashtable_insert(table, key, nullptr);
                EXPECT_TRUE(rc == 0 || rc == 12);
                added += rc == 0;
            }
            EXPECT_EQ(oru_hashtable_num_entries(table), added);
            EXPECT_EQ(oru_hashtable_close(table, nullptr, nullptr), 0);
        },
        {.promised_deaths = {}, .at_least = 4});
}

}  // namespace
