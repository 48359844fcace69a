#include "oru/record_cache.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>
#include <oruplatform/tracelet.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <functional>
#include <list>

#include <random>
#include <string>
#include <vector>

#include "oru/hashtable.h"
#include "oru/properties.h"
#include "tests/support/child.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::Trace;
using oru::test::TraceCapture;

constexpr uint32_t kKeyTag = 0x2900027;
constexpr uint32_t kEntryTag = 0x2900040;
constexpr uint32_t kElementTag = 0x2900041;

// A place by age, and an entry of the table, as outside code compiled apart sees them.
struct NodeRecord {
    const char *key;
    NodeRecord *newer;
    NodeRecord *older;
};

struct ItemRecord {
    ORUDoProperties *properties;
    NodeRecord *node;
};

std::vector<std::string> freed;

void free_key(void *key) {
    freed.push_back(static_cast<char *>(key));
    ph_free_named(key);
}

void add(query_record_cache &cache, const char *key) {
    EXPECT_EQ(add_query_record_cache(&cache, ph_strdup_named(kKeyTag, key), nullptr), 1);
}

std::vector<std::string> oldest_first(const query_record_cache &cache) {
    std::vector<std::string> keys;
    const auto *newest = reinterpret_cast<const NodeRecord *>(cache.newest);
    const NodeRecord *older = nullptr;
    for (const auto *node = reinterpret_cast<const NodeRecord *>(cache.oldest); node != nullptr;
         node = node->newer) {
        EXPECT_EQ(node->older, older);
        keys.push_back(node->key);
        older = node;
    }
    EXPECT_EQ(newest, older);
    return keys;
}

using Keys = std::vector<std::string>;

class RecordCache : public testing::Test {
  protected:
    explicit RecordCache(uint32_t bound = 2) {
        freed.clear();
        EXPECT_EQ(init_query_record_cache(&cache, bound, free_key), 1);
    }
    ~RecordCache() override {
        if (cache.records != nullptr) {
            EXPECT_EQ(destroy_query_record_cache(&cache), 1);
        }
    }
    // The text lives as long as the test.
    void find(const char *key) { find_query_record_cache(&cache, key); }

    query_record_cache cache;
};

class RecordCacheOfThree : public RecordCache {
  protected:
    RecordCacheOfThree() : RecordCache(3) {
        for (const char *key : {"a", "b", "c"})
            add(cache, key);
    }
};

// All that a process says before it ends, each line with its level.
std::string words_of_death(const std::function<void()> &body) {
    const auto child = oru::test::run_in_child([&body] {
        tracelet_set_sink(
            [](void *, const char *, uint32_t level, const char *text, const tracelet_place_t *) {
                std::fprintf(stderr, "<%u %s>\n", level, text);
            },
            nullptr);
        tracelet_set_threshold(7);
        body();
        return 0;
    });
    EXPECT_EQ(child.signal, SIGABRT) << child.describe();
    return child.output;
}

#define EXPECT_WORDS(words, wanted) \
    EXPECT_NE((words).find(wanted), std::string::npos) << (words) << "\nwithout " << (wanted)

std::string with_pointers(const char *format, const void *a, const void *b) {
    char text[200];
    std::snprintf(text, sizeof text, format, a, b);
    return text;
}

TEST(RecordCacheInit, SetsEveryFieldOfStorageOfAnyContents) {
    query_record_cache cache;
    std::memset(&cache, 0xa5, sizeof cache);
    ASSERT_EQ(init_query_record_cache(&cache, 7, free_key), 1);
    EXPECT_EQ(cache.max_size, 7u);
    EXPECT_EQ(cache.free_func, free_key);
    EXPECT_EQ(cache.size, 0u);
    EXPECT_EQ(cache.oldest, nullptr);
    EXPECT_EQ(cache.newest, nullptr);
    ASSERT_NE(cache.records, nullptr);
    EXPECT_EQ(oru_hashtable_get_size(cache.records), 14);
    EXPECT_EQ(oru_hashtable_num_entries(cache.records), 0);
    EXPECT_EQ(destroy_query_record_cache(&cache), 1);
}

TEST(RecordCacheInit, FieldsStandInTheirOrder) {
    EXPECT_EQ(offsetof(query_record_cache, max_size), 0u);
    EXPECT_EQ(offsetof(query_record_cache, free_func), 8u);
    EXPECT_EQ(offsetof(query_record_cache, size), 16u);
    EXPECT_EQ(offsetof(query_record_cache, oldest), 24u);
    EXPECT_EQ(offsetof(query_record_cache, newest), 32u);
    EXPECT_EQ(offsetof(query_record_cache, records), 40u);
    EXPECT_EQ(sizeof(query_record_cache), 48u);
}

TEST(RecordCacheInit, WithoutAFreeFunctionNothingIsDone) {
    query_record_cache cache;
    query_record_cache before;
    std::memset(&cache, 0xa5, sizeof cache);
    std::memcpy(&before, &cache, sizeof cache);
    TraceCapture traces;
    EXPECT_EQ(init_query_record_cache(&cache, 2, nullptr), 0);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "No free_func specified"}}));
    EXPECT_EQ(std::memcmp(&cache, &before, sizeof cache), 0);
}

TEST(RecordCacheInit, ATableThatCannotBeMadeIsFatal) {
    query_record_cache cache;
    for (uint64_t nth : {1u, 2u}) {
        EXPECT_FATAL(
            {
                poolheap_fail_nth(nth, 0);
                init_query_record_cache(&cache, 2, free_key);
            },
            "Failed to create record cache hashtable");
    }
    EXPECT_FATAL(init_query_record_cache(&cache, 0x80000000, free_key),
                 "Failed to create record cache hashtable");
}

TEST(RecordCacheArguments, ANullCacheIsAsserted) {
    EXPECT_ASSERTION(init_query_record_cache(nullptr, 2, free_key), "cache");
    EXPECT_ASSERTION(destroy_query_record_cache(nullptr), "cache");
    EXPECT_ASSERTION(add_query_record_cache(nullptr, "a", nullptr), "cache");
    EXPECT_ASSERTION(find_query_record_cache(nullptr, "a"), "cache");
    EXPECT_ASSERTION(get_record_cache_size(nullptr), "cache");
    EXPECT_ASSERTION(record_cache_sanity_check(nullptr), "cache");
}

TEST_F(RecordCache, WhatIsAddedIsFound) {
    ORUDoProperties *props = oru_do_properties_new();
    char *key = ph_strdup_named(kKeyTag, "/a");
    TraceCapture traces;
    EXPECT_EQ(add_query_record_cache(&cache, key, props), 1);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{7, "Record cache add /a"}}));
    EXPECT_EQ(find_query_record_cache(&cache, "/a"), props);
    EXPECT_EQ(get_record_cache_size(&cache), 1);
    EXPECT_TRUE(freed.empty());
}

TEST_F(RecordCache, EntriesAreKeptInTheirRecords) {
    ORUDoProperties *props = oru_do_properties_new();
    char *key = ph_strdup_named(kKeyTag, "/a");
    add_query_record_cache(&cache, key, props);
    void *found = nullptr;
    ASSERT_EQ(oru_hashtable_search(cache.records, "/a", &found), 0);
    const auto *item = static_cast<const ItemRecord *>(found);
    EXPECT_EQ(item->properties, props);
    EXPECT_EQ(item->node, reinterpret_cast<NodeRecord *>(cache.oldest));
    EXPECT_EQ(item->node->key, key);  // taken over, not copied
}

TEST_F(RecordCache, AnEntryHoldsTheReferenceThatItWasGiven) {
    ORUDoProperties *props = oru_do_properties_new();
    char words[100];
    TraceCapture traces(8);
    add_query_record_cache(&cache, ph_strdup_named(kKeyTag, "a"), props);
    std::snprintf(words, sizeof words, "oru ref oru_do_properties %p 2",
                  static_cast<void *>(props));
    EXPECT_FALSE(traces.has(8, words));
    add(cache, "b");
    add(cache, "c");
    std::snprintf(words, sizeof words, "oru deref oru_do_properties %p 1",
                  static_cast<void *>(props));
    EXPECT_TRUE(traces.has(8, words));
}

TEST_F(RecordCache, TheOldestEntryGoesWhenItIsFull) {
    add(cache, "a");
    add(cache, "b");
    TraceCapture traces;
    add(cache, "c");
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{{7, "Record cache add c"}, {7, "Record cache full - prune a"}}));
    EXPECT_EQ(freed, Keys{"a"});
    EXPECT_EQ(oldest_first(cache), (Keys{"b", "c"}));
    EXPECT_EQ(get_record_cache_size(&cache), 2);
    EXPECT_EQ(record_cache_sanity_check(&cache), 1);
}

TEST_F(RecordCache, WhatWasAskedForIsNotTheOldest) {
    add(cache, "a");
    add(cache, "b");
    find("a");
    add(cache, "c");
    EXPECT_EQ(freed, Keys{"b"});
    EXPECT_EQ(oldest_first(cache), (Keys{"a", "c"}));
}

TEST_F(RecordCache, AnUnknownKeyIsNotFoundAndChangesNothing) {
    add(cache, "a");
    add(cache, "b");
    TraceCapture traces;
    EXPECT_EQ(find_query_record_cache(&cache, "c"), nullptr);
    EXPECT_EQ(find_query_record_cache(&cache, nullptr), nullptr);
    EXPECT_EQ(get_record_cache_size(&cache), 2);
    EXPECT_EQ(oldest_first(cache), (Keys{"a", "b"}));
    EXPECT_TRUE(traces.lines().empty());
}

TEST_F(RecordCacheOfThree, AFindMovesTheEntryFromAnyPlace) {
    EXPECT_EQ(oldest_first(cache), (Keys{"a", "b", "c"}));
    find("c");
    EXPECT_EQ(oldest_first(cache), (Keys{"a", "b", "c"}));
    find("b");
    EXPECT_EQ(oldest_first(cache), (Keys{"a", "c", "b"}));
    find("a");
    EXPECT_EQ(oldest_first(cache), (Keys{"c", "b", "a"}));
    EXPECT_EQ(get_record_cache_size(&cache), 3);
}

TEST_F(RecordCache, AKeyThatIsThereIsFatal) {
    add(cache, "a");
    const std::string words = words_of_death([this] { add(cache, "a"); });
    EXPECT_WORDS(words, "<7 Record cache add a>");
    EXPECT_WORDS(words, with_pointers("<3 Failed to insert into record cache records %p cacheitem ",
                                      cache.records, nullptr));
    EXPECT_WORDS(words, " uri a>");
    EXPECT_WORDS(words, "<0 Record cache add failed a>");
}

TEST_F(RecordCache, ANullKeyIsFatal) {
    const std::string words =
        words_of_death([this] { add_query_record_cache(&cache, nullptr, nullptr); });
    EXPECT_WORDS(words, "<3 null key>");
    EXPECT_WORDS(words, " uri (null)>");
    EXPECT_WORDS(words, "<0 Record cache add failed (null)>");
}

TEST_F(RecordCache, AnAddToADestroyedCacheIsFatal) {
    destroy_query_record_cache(&cache);
    const std::string words = words_of_death([this] { add(cache, "a"); });
    EXPECT_WORDS(words, "<3 hashtable null>");
    EXPECT_WORDS(words, "<3 Failed to insert into record cache records (nil) cacheitem 0x");
    EXPECT_EQ(words.find("uri"), std::string::npos);
    EXPECT_WORDS(words, "<0 Record cache add failed a>");
}

TEST_F(RecordCache, AnEntryThatTheTableDoesNotKnowIsFatal) {
    add(cache, "a");
    add(cache, "b");
    const auto forget = [this] { oru_hashtable_remove(cache.records, "a", nullptr, nullptr); };
    EXPECT_FATAL((forget(), add(cache, "c")), "Missing record cache value a");
    EXPECT_FATAL((forget(), destroy_query_record_cache(&cache)), "Missing record cache value a");
}

TEST_F(RecordCache, AnEntryWithoutAnItemIsFatal) {
    add(cache, "a");
    add(cache, "b");
    const auto empty = [this] {
        oru_hashtable_remove(cache.records, "a", nullptr, nullptr);
        oru_hashtable_insert(cache.records, "a", nullptr);
    };
    EXPECT_FATAL((empty(), add(cache, "c")), "Missing record cache value a");
    EXPECT_FATAL((empty(), destroy_query_record_cache(&cache)), "Missing record cache value a");
}

TEST_F(RecordCache, WithoutItsFreeFunctionItPrunesToTheHeap) {
    add(cache, "a");
    add(cache, "b");
    cache.free_func = nullptr;
    add(cache, "c");
    EXPECT_TRUE(freed.empty());
    EXPECT_EQ(oldest_first(cache), (Keys{"b", "c"}));
    EXPECT_FATAL(destroy_query_record_cache(&cache), "no free func");
    cache.free_func = free_key;
}

TEST_F(RecordCacheOfThree, IsDestroyedOldestFirst) {
    find("a");
    TraceCapture traces;
    EXPECT_EQ(destroy_query_record_cache(&cache), 1);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{7, "Clean cache record b"},
                                                  {7, "Clean cache record c"},
                                                  {7, "Clean cache record a"}}));
    EXPECT_EQ(freed, (Keys{"b", "c", "a"}));
    EXPECT_EQ(cache.records, nullptr);
    EXPECT_EQ(cache.max_size, 0u);
    EXPECT_EQ(get_record_cache_size(&cache), 0);
    EXPECT_EQ(find_query_record_cache(&cache, "a"), nullptr);
}

TEST_F(RecordCache, AnEmptyOneIsDestroyedWithoutAWord) {
    TraceCapture traces;
    EXPECT_EQ(destroy_query_record_cache(&cache), 1);
    EXPECT_TRUE(traces.lines().empty());
}

TEST_F(RecordCache, IsInitialisedAgainAfterItsEnd) {
    add(cache, "a");
    destroy_query_record_cache(&cache);
    EXPECT_EQ(init_query_record_cache(&cache, 1, free_key), 1);
    add(cache, "a");
    add(cache, "b");
    EXPECT_EQ(oldest_first(cache), Keys{"b"});
}

TEST_F(RecordCache, ASecondDestructionIsFatal) {
    destroy_query_record_cache(&cache);
    EXPECT_FATAL(destroy_query_record_cache(&cache), "Failed to close record cache table");
}

TEST_F(RecordCache, ASizeThatIsNotTheTablesIsReported) {
    add(cache, "a");
    EXPECT_EQ(record_cache_sanity_check(&cache), 1);
    cache.size = 5;
    TraceCapture traces;
    EXPECT_EQ(record_cache_sanity_check(&cache), 0);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, "record cache size mismatch 1/5"}}));
    cache.size = 1;
}

TEST_F(RecordCache, AnEntryThatItsPoolDoesNotKnowIsFatal) {
    add(cache, "a");
    EXPECT_FATAL((init_chunk_poolheap_record_cache(4, 0), destroy_query_record_cache(&cache)),
                 "Failed to free ##name from chunk poolheap_chunk_##type");
}

// Keys that share a bucket of a cache of eight with "a".
std::string neighbour_of_a() {
    for (char c = 'b';; ++c) {
        const std::string key(1, c);
        if (oru_hash_str_calc(key.c_str()) % 16 == oru_hash_str_calc("a") % 16)
            return key;
    }
}

class RecordCacheOfEight : public RecordCache {
  protected:
    RecordCacheOfEight() : RecordCache(8) { add(cache, "a"); }
    // Adds with a key that is no allocation.
    void add_static(const char *key) { add_query_record_cache(&cache, key, nullptr); }
};

TEST_F(RecordCacheOfEight, MemoryThatRunsOutIsFatalAtEachStep) {
    EXPECT_FATAL((poolheap_fail_nth(1, 0), add_static("b")), "cant alloc cache_size_tracker_t");
    EXPECT_FATAL((poolheap_fail_nth(2, 0), add_static("b")), "cant alloc record_cache_type_t");
    const std::string key = neighbour_of_a();
    EXPECT_FATAL((poolheap_fail_nth(3, 0), add_static(key.c_str())), "Record cache add failed");
}

TEST_F(RecordCacheOfEight, MemoryCarriesItsTags) {
    EXPECT_FATAL((poolheap_fail_tag(kEntryTag), add_static("b")),
                 "cant alloc cache_size_tracker_t");
    const std::string key = neighbour_of_a();
    EXPECT_FATAL((poolheap_fail_tag(kElementTag), add_static(key.c_str())),
                 "Record cache add failed");
}

TEST_F(RecordCacheOfEight, AnElementThatItsPoolDoesNotKnowIsFatal) {
    add(cache, neighbour_of_a().c_str());
    EXPECT_FATAL(
        (init_chunk_poolheap_record_cache_hashtable_elem(4, 0), destroy_query_record_cache(&cache)),
        "Failed to free ##name from chunk poolheap_chunk_##type");
}

TEST(RecordCacheMemory, ThatRunsOutEndsTheProcessAsPromised) {
    oru::test::sweep_oom(
        [] {
            const std::string other = neighbour_of_a();
            query_record_cache cache;
            init_query_record_cache(&cache, 8, [](void *) {});
            add_query_record_cache(&cache, "a", nullptr);
            add_query_record_cache(&cache, other.c_str(), nullptr);
            EXPECT_EQ(destroy_query_record_cache(&cache), 1);
        },
        {.promised_deaths = {"Failed to create record cache hashtable",
                             "cant alloc cache_size_tracker_t", "cant alloc record_cache_type_t",
                             "Record cache add failed"},
         .at_least = 7});
}

// The same in a plain and slow way.
class Model {
  public:
    explicit Model(size_t bound) : bound_(bound) {}
    bool find(const std::string &key) {
        const auto at = std::find(keys_.begin(), keys_.end(), key);
        if (at == keys_.end())
            return false;
        keys_.splice(keys_.end(), keys_, at);
        return true;
    }
    void add(const std::string &key) {
        if (keys_.size() == bound_)
            keys_.pop_front();
        keys_.push_back(key);
    }
    Keys oldest_first() const { return {keys_.begin(), keys_.end()}; }

  private:
    size_t bound_;
    std::list<std::string> keys_;
};

TEST(RecordCacheModel, AnySequenceOfAddsAndFindsGivesTheSame) {
    std::mt19937 random(7);
    for (uint32_t bound : {1u, 2u, 3u, 10u}) {
        query_record_cache cache;
        init_query_record_cache(&cache, bound, free_key);
        Model model(bound);
        for (int step = 0; step < 500; ++step) {
            const std::string key = std::to_string(random() % (2 * bound + 1));
            ORUDoProperties *found = find_query_record_cache(&cache, key.c_str());
            ASSERT_EQ(found != nullptr, model.find(key)) << key;
            if (found == nullptr) {
                add_query_record_cache(&cache, ph_strdup_named(kKeyTag, key.c_str()),
                                       oru_do_properties_new());
                model.add(key);
            }
            ASSERT_EQ(oldest_first(cache), model.oldest_first());
            ASSERT_EQ(record_cache_sanity_check(&cache), 1);
        }
        destroy_query_record_cache(&cache);
    }
}

}  // namespace
