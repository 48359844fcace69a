#include <gtest/gtest.h>
#include <oruplatform/hash.h>
#include <strings.h>

#include <string>
#include <vector>

#include "nothing_live.h"

namespace {

// The walk functions write down what they see here.
std::vector<std::string> g_seen;
int g_closed = 0;

char *text(const char *words) {
    return const_cast<char *>(words);
}

int32_t note_item(void *, void *item) {
    g_seen.emplace_back(static_cast<const char *>(item));
    return 1;
}

int32_t count_closed(void *) {
    g_closed++;
    return 0;
}

struct Hash : NothingLive {
    Hash() { g_seen.clear(), g_closed = 0; }
    ~Hash() override { hashCloseWithFunction(table, nullptr); }

    void fill(std::initializer_list<const char *> keys) {
        for (const char *key : keys) {
            ASSERT_EQ(hashAdd(table, key, text(key)), 0);
        }
    }
    std::vector<std::string> walked() {
        g_seen.clear();
        EXPECT_EQ(hashWalk(table, 1, note_item), 0);
        return g_seen;
    }
    void *table = nullptr;
};

struct MadeHash : Hash {
    MadeHash() { table = hashMake(0); }
    void TearDown() override {
        hashCloseWithFunction(table, nullptr);
        table = nullptr;
        Hash::TearDown();
    }
};

using Words = std::vector<std::string>;

}  // namespace

TEST_F(MadeHash, FindsWhatWasAdded) {
    fill({"a", "b"});
    EXPECT_STREQ(static_cast<char *>(hashFind(table, std::string("b").c_str())), "b");
    EXPECT_EQ(hashFind(table, "c"), nullptr);
    EXPECT_EQ(hashFind(table, ""), nullptr);
}

TEST_F(MadeHash, EmptyTextAndNullItemArePlainEntries) {
    EXPECT_EQ(hashAdd(table, "", text("empty")), 0);
    EXPECT_EQ(hashAdd(table, "none", nullptr), 0);
    EXPECT_STREQ(static_cast<char *>(hashFind(table, "")), "empty");
    EXPECT_EQ(hashAdd(table, "none", text("other")), 17);
}

TEST_F(MadeHash, DuplicateKeyIsRefusedAndTheOldItemStays) {
    fill({"a"});
    EXPECT_EQ(hashAdd(table, std::string("a").c_str(), text("other")), 17);
    EXPECT_STREQ(static_cast<char *>(hashFind(table, "a")), "a");
    EXPECT_EQ(walked(), (Words{"a"}));
}

TEST_F(MadeHash, RemovedKeyIsGoneAndMayComeAgain) {
    fill({"a", "b"});
    EXPECT_STREQ(static_cast<char *>(hashRemove(table, "a")), "a");
    EXPECT_EQ(hashRemove(table, "a"), nullptr);
    EXPECT_EQ(hashFind(table, "a"), nullptr);
    fill({"a"});
    EXPECT_EQ(walked(), (Words{"b", "a"}));
}

TEST_F(MadeHash, KeepsTheKeysAddress) {
    char key[] = "one";
    EXPECT_EQ(hashAdd(table, key, text("item")), 0);
    key[0] = 'u';  // nobody must do this; it shows whose bytes are compared
    EXPECT_EQ(hashFind(table, "one"), nullptr);
}

TEST_F(MadeHash, GrowsAndFindsAllOfTenThousand) {
    std::vector<std::string> keys;
    for (int i = 0; i < 10000; i++) {
        keys.push_back("key" + std::to_string(i));
    }
    for (std::string &key : keys) {
        ASSERT_EQ(hashAdd(table, key.c_str(), key.data()), 0);
    }
    for (const std::string &key : keys) {
        ASSERT_EQ(hashFind(table, std::string(key).c_str()), key.data());
    }
    for (size_t i = 0; i < keys.size(); i += 2) {
        ASSERT_EQ(hashRemove(table, keys[i].c_str()), keys[i].data());
    }
    EXPECT_EQ(walked().size(), 5000u);
    EXPECT_EQ(g_seen.front(), "key1");
    EXPECT_EQ(g_seen.back(), "key9999");
}

TEST_F(MadeHash, WalksInTheOrderOfInsertion) {
    fill({"z", "a", "m"});
    EXPECT_EQ(walked(), (Words{"z", "a", "m"}));
}

TEST_F(MadeHash, WalkEndsWhenTheFunctionGivesZero) {
    fill({"a", "b", "c"});
    EXPECT_EQ(hashWalk(table, 1,
                       [](void *, void *item) -> int32_t {
                           g_seen.emplace_back(static_cast<char *>(item));
                           return g_seen.size() < 2 ? 1 : 0;
                       }),
              1);
    EXPECT_EQ(g_seen, (Words{"a", "b"}));
}

TEST_F(MadeHash, WalkWithContextHandsOverTableItemKeyAndContext) {
    fill({"k"});
    struct Seen {
        void *table, *item;
        const char *key;
    } seen{};
    EXPECT_EQ(hashWalkWithContext(
                  table, 1,
                  [](void *at, void *item, const char *key, void *context) -> int32_t {
                      *static_cast<Seen *>(context) = {at, item, key};
                      return 1;
                  },
                  &seen),
              0);
    EXPECT_EQ(seen.table, table);
    EXPECT_STREQ(static_cast<char *>(seen.item), "k");
    EXPECT_STREQ(seen.key, "k");
}

TEST_F(MadeHash, CurrentEntryMayBeRemovedInAWalk) {
    fill({"a", "b", "c"});
    EXPECT_EQ(hashWalk(table, 1,
                       [](void *at, void *item) -> int32_t {
                           EXPECT_EQ(hashRemove(at, static_cast<char *>(item)), item);
                           return note_item(at, item);
                       }),
              0);
    EXPECT_EQ(g_seen, (Words{"a", "b", "c"}));
    EXPECT_EQ(walked(), Words{});
}

TEST_F(MadeHash, AnEntryAheadThatIsRemovedInAWalkIsNotVisited) {
    fill({"a", "b", "c"});
    hashWalk(table, 1, [](void *at, void *item) -> int32_t {
        hashRemove(at, "b");
        return note_item(at, item);
    });
    EXPECT_EQ(g_seen, (Words{"a", "c"}));
}

TEST_F(MadeHash, EntriesAddedInAWalkAreVisitedEvenWhenTheTableGrows) {
    fill({"0"});
    static std::vector<std::string> keys;
    keys.clear();
    for (int i = 1; i < 100; i++) {
        keys.push_back(std::to_string(i));
    }
    hashWalk(table, 1, [](void *at, void *item) -> int32_t {
        if (const size_t n = g_seen.size(); n < keys.size()) {
            EXPECT_EQ(hashAdd(at, keys[n].c_str(), keys[n].data()), 0);
        }
        return note_item(at, item);
    });
    EXPECT_EQ(g_seen.size(), 100u);
    EXPECT_EQ(g_seen.back(), "99");
}

TEST_F(MadeHash, InnerWalkLeavesRemovedEntriesToTheOuterOne) {
    fill({"a", "b", "c"});
    hashWalk(table, 1, [](void *at, void *item) -> int32_t {
        hashRemove(at, static_cast<char *>(item));
        hashWalk(at, 1, [](void *, void *) -> int32_t { return 1; });
        return note_item(at, item);
    });
    EXPECT_EQ(g_seen, (Words{"a", "b", "c"}));
}

TEST_F(MadeHash, RemovedEntryMayBeAddedAgainInTheSameWalk) {
    fill({"a", "b"});
    hashWalk(table, 1, [](void *at, void *item) -> int32_t {
        if (g_seen.empty()) {
            hashRemove(at, "a");
            EXPECT_EQ(hashAdd(at, "a", text("again")), 0);
        }
        return note_item(at, item);
    });
    EXPECT_EQ(g_seen, (Words{"a", "b", "again"}));
}

TEST_F(Hash, CloseCallsTheFunctionOnEveryItemWhateverItGives) {
    table = hashMake(0);
    fill({"a", "b", "c"});
    hashCloseWithFunction(table, count_closed);
    table = nullptr;
    EXPECT_EQ(g_closed, 3);
}

TEST_F(Hash, ClosingFunctionMayFreeItemsThatHoldTheirKeys) {
    table = hashMake(1);
    for (int i = 0; i < 40; i++) {
        char *key = static_cast<char *>(ph_malloc_named(0x2900000, 16));
        snprintf(key, 16, "%d", i);
        ASSERT_EQ(hashAdd(table, key, key), 0);
    }
    hashCloseWithFunction(table, ph_free_named);
    table = nullptr;
}

TEST_F(Hash, CustomFunctionsDecide) {
    static int hashes;
    hashes = 0;
    table = hashMakeTable(
        4,
        [](const char *) -> uint32_t {
            hashes++;
            return 7;
        },
        [](const char *a, const char *b) -> int32_t { return strcasecmp(a, b); });
    fill({"Key", "other"});
    EXPECT_STREQ(static_cast<char *>(hashFind(table, "kEY")), "Key");
    EXPECT_EQ(hashAdd(table, "OTHER", nullptr), 17);
    EXPECT_EQ(hashes, 4);
    hashCloseWithFunction(table, nullptr);
    table = nullptr;
}

TEST_F(MadeHash, NullArgumentsAreRefused) {
    EXPECT_EQ(hashAdd(nullptr, "a", table), 22);
    EXPECT_EQ(hashAdd(table, nullptr, table), 22);
    EXPECT_EQ(hashFind(nullptr, "a"), nullptr);
    EXPECT_EQ(hashFind(table, nullptr), nullptr);
    EXPECT_EQ(hashRemove(nullptr, "a"), nullptr);
    EXPECT_EQ(hashRemove(table, nullptr), nullptr);
    EXPECT_EQ(hashWalk(nullptr, 1, note_item), 22);
    EXPECT_EQ(hashWalk(table, 1, nullptr), 22);
    EXPECT_EQ(hashWalkWithContext(nullptr, 1, nullptr, nullptr), 22);
    EXPECT_EQ(hashWalkWithContext(table, 1, nullptr, nullptr), 22);
    hashCloseWithFunction(nullptr, count_closed);
    EXPECT_EQ(g_closed, 0);
}

TEST_F(Hash, NoMemoryGivesNoTableAndNothingStays) {
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(hashMake(0), nullptr);
    poolheap_fail_nth(2, 0);
    EXPECT_EQ(hashMake(0), nullptr);
    EXPECT_EQ(poolheap_fail_hits(), 1u);
}

TEST_F(MadeHash, NoMemoryForAnEntryGivesTwelve) {
    fill({"a"});
    poolheap_fail_nth(1, 1);
    EXPECT_EQ(hashAdd(table, "b", text("b")), 12);
    poolheap_fail_off();
    EXPECT_EQ(hashFind(table, "b"), nullptr);
    EXPECT_EQ(walked(), (Words{"a"}));
}

TEST_F(MadeHash, NoMemoryToGrowIsNoFailure) {
    std::vector<std::string> keys;
    for (int i = 0; i < 64; i++) {
        keys.push_back(std::to_string(i));
    }
    poolheap_fail_tag(0x2800002);  // the bucket arrays
    for (std::string &key : keys) {
        ASSERT_EQ(hashAdd(table, key.c_str(), key.data()), 0);
    }
    EXPECT_GT(poolheap_fail_hits(), 0u);
    for (std::string &key : keys) {
        EXPECT_EQ(hashFind(table, key.c_str()), key.data());
    }
}
