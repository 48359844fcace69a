#include <gtest/gtest.h>

#include "rows.h"

namespace embedded {
namespace {

using Texts = std::vector<std::string>;
using Kind = Condition::Kind;

Condition compare(Kind kind, const char *name, Cell operand, int32_t type = 5) {
    Condition condition;
    condition.kind = kind;
    condition.name = name;
    condition.type = type;
    condition.operand = operand;
    return condition;
}

Condition group(Kind kind, std::vector<Condition> parts) {
    Condition condition;
    condition.kind = kind;
    condition.parts = std::move(parts);
    return condition;
}

class StoreScan : public testing::Test {
  protected:
    void SetUp() override {
        commit(*store, {create("a", {number("x", 3), text("t", "b")}, "K"),
                        create("b", {number("x", 1), text("t", "aa")}, "L"),
                        create("c", {number("x", 2)}, "K"), create("d", {text("t", "")}, "M"),
                        create("e", {text("x", "2")}, "L")});
    }

    Query all_keys() {
        Query query = everything(store->head());
        query.all_names = false;
        return query;
    }

    /* The keys alone. */
    std::string keys(const Query &query, uint32_t batch = 2) {
        std::string result;
        for (const std::string &text : read_all(*store, query, batch))
            result += text.substr(0, text.find(':'));
        return result;
    }

    std::string where(const Condition &condition) {
        Query query = all_keys();
        query.where = &condition;
        return keys(query);
    }

    std::string ordered(std::vector<SortKey> order, uint32_t batch = 2) {
        Query query = all_keys();
        query.order = std::move(order);
        return keys(query, batch);
    }

    std::unique_ptr<Store> store = open_sqlite_store({});
};

TEST_F(StoreScan, RangeIsHalfOpen) {
    Query query = all_keys();
    query.ranges = {{"b", "d"}};
    EXPECT_EQ(keys(query), "bc");
    query.ranges = {{"b", "b"}};
    EXPECT_EQ(keys(query), "");
}

TEST_F(StoreScan, DescendingComesFromTheEnd) {
    Query query = all_keys();
    query.descending = true;
    EXPECT_EQ(keys(query), "edcba");
    EXPECT_EQ(keys(query, 1), "edcba");
    query.ranges = {{"b", "d"}};
    EXPECT_EQ(keys(query), "cb");
}

TEST_F(StoreScan, LastBatchTellsSoWhenItIsNotFull) {
    const std::unique_ptr<Scan> scan = store->scan(all_keys());
    Rows rows;
    EXPECT_EQ(scan->next(3, rows), ReadStatus::more);
    EXPECT_EQ(rows.texts.size(), 3U);
    EXPECT_EQ(scan->next(3, rows), ReadStatus::last);
    EXPECT_EQ(rows.texts.size(), 5U);
}

TEST_F(StoreScan, FullBatchTellsWhetherMoreFollows) {
    Query query = all_keys();
    for (const bool is_sorted : {false, true}) {
        if (is_sorted)
            query.order = {{"x"}};
        Rows rows;
        EXPECT_EQ(store->scan(query)->next(5, rows), ReadStatus::last);
        EXPECT_EQ(store->scan(query)->next(4, rows), ReadStatus::more);
        EXPECT_EQ(rows.texts.size(), 9U);
    }
}

TEST_F(StoreScan, RangesFollowEachOtherWithinABatch) {
    Query query = all_keys();
    query.ranges = {{"a", "c"}, {"ca", "cb"}, {"d", "f"}};
    for (uint32_t batch = 1; batch < 6; batch++)
        EXPECT_EQ(keys(query, batch), "abde") << batch;
    query.descending = true;
    for (uint32_t batch = 1; batch < 6; batch++)
        EXPECT_EQ(keys(query, batch), "edba") << batch;
    query.order = {{"x"}};
    EXPECT_EQ(keys(query), "dbae");
    query.ranges = {};
    EXPECT_EQ(keys(query), "");
    query.order = {};
    EXPECT_EQ(keys(query), "");
}

TEST_F(StoreScan, NewestIsWhateverIsThere) {
    EXPECT_EQ(read_one(*store, "c", kNewest), "c:K{x/5=2}");
    EXPECT_EQ(read_all(*store, everything(kNewest)).size(), 5U);
}

TEST_F(StoreScan, MissingAttributesSortAsTold) {
    SortKey key{"x"};
    key.when_missing = Cell::of_integer(2);
    EXPECT_EQ(ordered({key}), "bcdae");
}

TEST_F(StoreScan, KindsChoose) {
    Query query = all_keys();
    query.kinds = {"K"};
    EXPECT_EQ(keys(query), "ac");
    query.kinds = {"K", "M"};
    EXPECT_EQ(keys(query, 1), "acd");
    query.kinds = {"Nobody"};
    EXPECT_EQ(keys(query), "");
}

TEST_F(StoreScan, NamesChooseAttributes) {
    Query query = all_keys();
    query.names = {"t", "never"};
    EXPECT_EQ(read_all(*store, query),
              (Texts{"a:K{t/8=\"b\"}", "b:L{t/8=\"aa\"}", "c:K{}", "d:M{t/8=\"\"}", "e:L{}"}));
    Rows rows;
    const std::vector<std::string> names = {"x"};
    store->read("a", &names, 1, rows);
    EXPECT_EQ(rows.texts, Texts{"a:K{x/5=3}"});
}

TEST_F(StoreScan, SeesItsRevisionWhateverIsCommitted) {
    const std::unique_ptr<Scan> scan = store->scan(everything(1));
    Rows rows;
    scan->next(2, rows);
    commit(*store, {erase("c"), set("d", {text("t", "changed")}), create("cc")});
    scan->next(9, rows);
    EXPECT_EQ(rows.texts, (Texts{"a:K{x/5=3,t/8=\"b\"}", "b:L{x/5=1,t/8=\"aa\"}", "c:K{x/5=2}",
                                 "d:M{t/8=\"\"}", "e:L{x/8=\"2\"}"}));
}

TEST_F(StoreScan, ComparisonsOfNumbers) {
    const Cell two = Cell::of_integer(2);
    EXPECT_EQ(where(compare(Kind::equal, "x", two)), "c");
    EXPECT_EQ(where(compare(Kind::not_equal, "x", two)), "ab");
    EXPECT_EQ(where(compare(Kind::less, "x", two)), "b");
    EXPECT_EQ(where(compare(Kind::at_most, "x", two)), "bc");
    EXPECT_EQ(where(compare(Kind::greater, "x", two)), "a");
    EXPECT_EQ(where(compare(Kind::at_least, "x", two)), "ac");
}

TEST_F(StoreScan, MissingAndOtherTypesAreAsTold) {
    Condition condition = compare(Kind::equal, "x", Cell::of_integer(2));
    condition.when_missing = true;
    EXPECT_EQ(where(condition), "cde");
    EXPECT_EQ(where(compare(Kind::equal, "x", Cell::of_text("2"), 8)), "e");
    EXPECT_EQ(where(compare(Kind::equal, "never", Cell::of_integer(2))), "");
}

TEST_F(StoreScan, TextsCompareByteByByteOrByLength) {
    EXPECT_EQ(where(compare(Kind::less, "t", Cell::of_text("b"), 8)), "bd");
    Condition condition = compare(Kind::less, "t", Cell::of_text("b"), 8);
    condition.by_length = true;
    EXPECT_EQ(where(condition), "d");
    condition.kind = Kind::greater;
    EXPECT_EQ(where(condition), "b");
    condition.kind = Kind::equal;
    EXPECT_EQ(where(condition), "a");
}

/* Beyond the integers of the store, numbers are blobs, which order behind all integers. */
TEST_F(StoreScan, BlobsAreGreaterThanIntegers) {
    commit(*store, {create("f", {{"x", 5, {}, Cell::of_blob("\x80")}})});
    EXPECT_EQ(where(compare(Kind::greater, "x", Cell::of_integer(2))), "af");
    EXPECT_EQ(where(compare(Kind::less, "x", Cell::of_blob("\x81"))), "abcf");
}

TEST_F(StoreScan, GroupsCombine) {
    const Condition big = compare(Kind::at_least, "x", Cell::of_integer(2));
    const Condition named = compare(Kind::equal, "t", Cell::of_text("b"), 8);
    const Condition empty = compare(Kind::equal, "t", Cell::of_text(""), 8);
    EXPECT_EQ(where(group(Kind::all, {big, named})), "a");
    EXPECT_EQ(where(group(Kind::any, {big, empty})), "acd");
    EXPECT_EQ(where(group(Kind::all, {group(Kind::any, {named, empty}), big})), "a");
    EXPECT_EQ(where(group(Kind::all, {})), "abcde");
    EXPECT_EQ(where(group(Kind::any, {})), "");
}

TEST_F(StoreScan, OrderByAttributesAndThenByKey) {
    // without the attribute first, then numbers, then texts
    EXPECT_EQ(ordered({{"x"}}), "dbcae");
    EXPECT_EQ(ordered({{"x", true}}), "eacbd");
    EXPECT_EQ(ordered({{"never"}}), "abcde");
    EXPECT_EQ(ordered({{"t"}}), "cedba");
    EXPECT_EQ(ordered({{"t", false, true}}), "cedab");
    EXPECT_EQ(ordered({{"t", true, true}}), "badce");
    EXPECT_EQ(ordered({{"never"}, {"x"}}, 1), "dbcae");
    EXPECT_EQ(ordered({{"x"}}, 5), "dbcae");
}

TEST_F(StoreScan, OrderedScansDoNotMindEachOther) {
    Query query = all_keys();
    query.order = {{"x"}};
    std::unique_ptr<Scan> first = store->scan(query);
    query.order = {{"x", true}};
    const std::unique_ptr<Scan> second = store->scan(query);
    query.ranges = {{"z", "zz"}};
    const std::unique_ptr<Scan> empty = store->scan(query);
    Rows rows;
    first->next(2, rows);
    second->next(2, rows);
    EXPECT_EQ(empty->next(2, rows), ReadStatus::last);
    first->next(1, rows);
    first.reset();
    commit(*store, {erase("b")});
    EXPECT_EQ(second->next(4, rows), ReadStatus::last);
    EXPECT_EQ(rows.texts,
              (Texts{"d:M{}", "b:L{}", "e:L{}", "a:K{}", "c:K{}", "c:K{}", "b:L{}", "d:M{}"}));
}

TEST_F(StoreScan, OrderWithWhereAndKinds) {
    const Condition has_x = compare(Kind::at_least, "x", Cell::of_integer(0));
    Query query = all_keys();
    query.where = &has_x;
    query.kinds = {"K"};
    query.order = {{"x"}};
    EXPECT_EQ(keys(query), "ca");
}

}  // namespace
}  // namespace embedded
