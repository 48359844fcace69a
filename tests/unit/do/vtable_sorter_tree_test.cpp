// What the sorter asks of the platform's balanced tree, what it makes of the answers, and its own
// records as that layer sees them.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <oruplatform/balanced_tree.h>
#include <oruplatform/poolheap.h>

#include <memory>
#include <string>
#include <vector>

#include "oru/value.h"
#include "oru/vlist.h"
#include "oru/vtable.h"
#include "oru/vtable_sorter.h"
#include "tests/support/owned.h"

namespace {

using Compare = int32_t (*)(const void *a, const void *b);
using Walk = int32_t (*)(void *object, void *context);

// What the stand-in answers instead of the tree, 0 for the tree's own answer; and what it was
// asked.
struct TreeLog {
    int32_t init = 0;
    int32_t allocate = 0;
    int32_t insert = 0;
    int32_t search = 0;
    Compare compare = nullptr;
    int32_t mode = -1;
    int32_t freed = 0;
    int32_t shut_down = 0;
    bool has_status = false;
    bool zeros = true;
};

TreeLog tree_log;

template <class Function>
Function *real(const char *name) {
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {
ORU_API int32_t balanced_tree_init(Compare compare, uintptr_t zero, void **tree) {
    tree_log.compare = compare;
    tree_log.zeros &= zero == 0;
    if (tree_log.init != 0)
        return tree_log.init;
    return real<int32_t(Compare, uintptr_t, void **)>("balanced_tree_init")(compare, zero, tree);
}
ORU_API int32_t balanced_tree_allocate_object(void *tree, void **object, size_t size) {
    if (tree_log.allocate != 0)
        return tree_log.allocate;
    return real<int32_t(void *, void **, size_t)>("balanced_tree_allocate_object")(tree, object,
                                                                                   size);
}
ORU_API int32_t balanced_tree_insert(void *tree, void *object, uintptr_t zero) {
    tree_log.zeros &= zero == 0;
    if (tree_log.insert != 0)
        return tree_log.insert;
    return real<int32_t(void *, void *, uintptr_t)>("balanced_tree_insert")(tree, object, zero);
}
ORU_API int32_t balanced_tree_search(void *tree, int32_t mode, const void *key, void **object,
                                     uintptr_t zero) {
    tree_log.mode = mode;
    tree_log.zeros &= zero == 0;
    if (tree_log.search != 0)
        return tree_log.search;
    return real<int32_t(void *, int32_t, const void *, void **, uintptr_t)>("balanced_tree_search")(
        tree, mode, key, object, zero);
}
ORU_API int32_t balanced_tree_walk(void *tree, Walk fn, void *context, int32_t *status) {
    tree_log.has_status = status != nullptr;
    int32_t own = 0;
    return real<int32_t(void *, Walk, void *, int32_t *)>("balanced_tree_walk")(
        tree, fn, context, status != nullptr ? status : &own);
}
ORU_API int32_t balanced_tree_free_object(void *tree, void *object) {
    ++tree_log.freed;
    return real<int32_t(void *, void *)>("balanced_tree_free_object")(tree, object);
}
ORU_API int32_t balanced_tree_shutdown(void *tree, uintptr_t zero) {
    ++tree_log.shut_down;
    tree_log.zeros &= zero == 0;
    return real<int32_t(void *, uintptr_t)>("balanced_tree_shutdown")(tree, zero);
}
}

namespace {

using oru::test::Value;
using oru::test::Vlist;
using Table = std::unique_ptr<ORUDoVtable, oru::test::Deref<oru_do_vtable_deref>>;

struct SorterImage {
    void *tree;
    uint32_t key_start;
    uint32_t key_count;
    char *directions;
    int32_t index_column;
    uint32_t next_index;
    int32_t count_column;
    uint32_t row_total;
};

struct NodeImage {
    ORUVtableSorter *sorter;
    ORUDoVlist *keys;
    ORUDoVtable *rows;
};

Vlist row_of(const std::vector<int32_t> &numbers) {
    Vlist row(oru_do_vlist_new());
    for (const int32_t number : numbers)
        oru_do_vlist_add_int(row.get(), number);
    return row;
}

class VtableSorterTree : public testing::Test {
  protected:
    VtableSorterTree() { tree_log = {}; }
    ~VtableSorterTree() override {
        oru_vtable_sorter_delete(sorter, nullptr);
        tree_log = {};
    }

    void make(int32_t key_count, const char *directions) {
        oru_vtable_sorter_delete(sorter, nullptr);
        sorter = oru_vtable_sorter_new(0, key_count, directions, -1, -1);
    }
    SorterImage &image() { return *reinterpret_cast<SorterImage *>(sorter); }
    int32_t add(const Vlist &row) { return oru_vtable_sorter_add(sorter, row.get()); }
    static NodeImage node(ORUVtableSorter *owner, const Vlist &keys) {
        return {owner, keys.get(), nullptr};
    }
    int32_t compare(const Vlist &a, const Vlist &b) {
        const NodeImage first = node(sorter, a);
        const NodeImage second = node(sorter, b);
        return tree_log.compare(&first, &second);
    }

    ORUVtableSorter *sorter = nullptr;
};

constexpr int32_t kEqual = 0;
constexpr int32_t kLess = 1;
constexpr int32_t kGreater = 2;
constexpr int32_t kFailed = -1;

TEST_F(VtableSorterTree, TheRecordHasItsFieldsInOrder) {
    sorter = oru_vtable_sorter_new(2, 3, "ad", -1, 7);
    EXPECT_NE(image().tree, nullptr);
    EXPECT_EQ(image().key_start, 2u);
    EXPECT_EQ(image().key_count, 3u);
    EXPECT_EQ(std::string(image().directions, 3), std::string("ad\0", 3));
    EXPECT_EQ(image().index_column, -1);
    EXPECT_EQ(image().next_index, 1u);
    EXPECT_EQ(image().count_column, 7);
    EXPECT_EQ(image().row_total, 0u);
    make(2, nullptr);
    EXPECT_EQ(std::string(image().directions, 2), std::string(2, '\0'));
}

TEST_F(VtableSorterTree, AsksForTheEqualNodeAndWalksWithAStatus) {
    make(1, nullptr);
    EXPECT_EQ(add(row_of({1})), 0);
    EXPECT_EQ(tree_log.mode, 1);
    oru_vtable_sorter_delete(std::exchange(sorter, nullptr), nullptr);
    EXPECT_TRUE(tree_log.has_status);
    EXPECT_TRUE(tree_log.zeros);
    EXPECT_EQ(tree_log.shut_down, 1);
    EXPECT_EQ(tree_log.freed, 0);
}

TEST_F(VtableSorterTree, NoTreeMeansNoSorter) {
    tree_log.init = 12;
    make(1, nullptr);
    EXPECT_EQ(sorter, nullptr);
    tree_log.init = 22;
    make(1, nullptr);
    EXPECT_EQ(sorter, nullptr);
    EXPECT_EQ(tree_log.shut_down, 0);
}

TEST_F(VtableSorterTree, ASorterWithoutATreeFilesAndCountsNothing) {
    make(1, nullptr);
    void *const tree = std::exchange(image().tree, nullptr);
    EXPECT_EQ(add(row_of({1})), 10000);
    EXPECT_EQ(image().row_total, 0u);
    const Table table(oru_do_vtable_new());
    oru_vtable_sorter_delete(std::exchange(sorter, nullptr), table.get());
    EXPECT_EQ(oru_do_vtable_get_row_num(table.get()), 0);
    EXPECT_EQ(tree_log.shut_down, 0);
    balanced_tree_shutdown(tree, 0);
}

TEST_F(VtableSorterTree, WhatTheTreeCannotDoIsTheResultAndCounts) {
    make(1, nullptr);
    const struct {
        int32_t TreeLog::*step;
        int32_t answer;
        int32_t code;
    } cases[] = {
        {&TreeLog::allocate, 12, 10002}, {&TreeLog::allocate, 22, 10000},
        {&TreeLog::insert, 12, 10002},   {&TreeLog::insert, 17, 10000},
        {&TreeLog::insert, 22, 10000},   {&TreeLog::search, 12, 10000},
        {&TreeLog::search, 22, 10000},   {&TreeLog::search, 17, 10000},
    };
    uint32_t total = 0;
    for (const auto &step : cases) {
        tree_log.*step.step = step.answer;
        EXPECT_EQ(add(row_of({1})), step.code) << step.answer;
        EXPECT_EQ(image().row_total, ++total);
        tree_log.*step.step = 0;
    }
    EXPECT_EQ(tree_log.freed, 3);  // the objects that could not be inserted
    EXPECT_EQ(add(row_of({1})), 0);
    const Table table(oru_do_vtable_new());
    oru_vtable_sorter_delete(std::exchange(sorter, nullptr), table.get());
    EXPECT_EQ(oru_do_vtable_get_row_num(table.get()), 1);
}

// ---- The comparison of nodes ----

TEST_F(VtableSorterTree, NodesWithoutASorterAreEqual) {
    make(1, nullptr);
    const Vlist one = row_of({1});
    const Vlist two = row_of({2});
    const NodeImage lone = node(nullptr, one);
    const NodeImage owned = node(sorter, two);
    EXPECT_EQ(tree_log.compare(&lone, &lone), kEqual);
    EXPECT_EQ(tree_log.compare(&lone, &owned), kEqual);
    EXPECT_EQ(tree_log.compare(&owned, &lone), kEqual);
}

TEST_F(VtableSorterTree, NodesWithoutKeysComeFirst) {
    for (const int32_t key_count : {1, 0}) {
        make(key_count, "d");
        EXPECT_EQ(compare(nullptr, nullptr), kEqual);
        EXPECT_EQ(compare(nullptr, row_of({1})), kLess);
        EXPECT_EQ(compare(row_of({1}), nullptr), kGreater);
    }
}

TEST_F(VtableSorterTree, WithoutKeyColumnsAllNodesAreEqual) {
    for (const int32_t key_count : {0, -1}) {
        make(key_count, nullptr);
        EXPECT_EQ(compare(row_of({1}), row_of({2})), kEqual);
    }
}

TEST_F(VtableSorterTree, KeysGoByTheirDirection) {
    make(1, "a");
    EXPECT_EQ(compare(row_of({1}), row_of({2})), kLess);
    EXPECT_EQ(compare(row_of({2}), row_of({1})), kGreater);
    EXPECT_EQ(compare(row_of({1}), row_of({1})), kEqual);
    make(1, "d");
    EXPECT_EQ(compare(row_of({1}), row_of({2})), kGreater);
    EXPECT_EQ(compare(row_of({2}), row_of({1})), kLess);
    EXPECT_EQ(compare(row_of({1}), row_of({1})), kEqual);
    make(2, "ad");
    EXPECT_EQ(compare(row_of({1, 1}), row_of({1, 2})), kGreater);
    EXPECT_EQ(compare(row_of({1, 1}), row_of({1, 1})), kEqual);
}

// Whatever the direction, and on both sides alike.
TEST_F(VtableSorterTree, AMissingKeyIsLess) {
    for (const char *directions : {"a", "d", "s"}) {
        make(1, directions);
        EXPECT_EQ(compare(row_of({}), row_of({1})), kLess) << directions;
        EXPECT_EQ(compare(row_of({1}), row_of({})), kLess) << directions;
        EXPECT_EQ(compare(row_of({}), row_of({})), kLess) << directions;
    }
}

TEST_F(VtableSorterTree, TextsGoByTheirLengthFirst) {
    const auto text = [](const char *words) {
        Vlist row(oru_do_vlist_new());
        oru_do_vlist_add_string(row.get(), words);
        return row;
    };
    for (const char *directions : {"s", "a"}) {
        make(1, directions);
        EXPECT_EQ(compare(text("b"), text("aa")), kLess);
        EXPECT_EQ(compare(text("aa"), text("b")), kGreater);
        EXPECT_EQ(compare(text("ab"), text("ba")), kLess);
        EXPECT_EQ(compare(text("ba"), text("ab")), kGreater);
        EXPECT_EQ(compare(text("ab"), text("ab")), kEqual);
        EXPECT_EQ(compare(text(""), text("a")), kLess);
    }
}

// One whose storage could not be had.
TEST_F(VtableSorterTree, AStringWithoutStorageReadsAsEmpty) {
    poolheap_fail_nth(2, 0);
    const Value lost(oru_do_value_new_string("lost"));
    poolheap_fail_off();
    ASSERT_NE(lost, nullptr);
    Vlist without(oru_do_vlist_new());
    oru_do_vlist_add(without.get(), lost.get());
    Vlist with(oru_do_vlist_new());
    oru_do_vlist_add_string(with.get(), "a");
    make(1, "s");
    EXPECT_EQ(compare(without, with), kLess);
    EXPECT_EQ(compare(with, without), kGreater);
    EXPECT_EQ(compare(without, without), kEqual);
}

// The records of two URIs are compared, in whatever order they come out; one of another kind fails.
TEST_F(VtableSorterTree, UrisHaveAnOrder) {
    const auto uri = [](const char *text) {
        Vlist row(oru_do_vlist_new());
        oru_do_vlist_add_mr_uri(row.get(), oru::test::Uri(oru_do_uri_new(text)).get());
        return row;
    };
    const Vlist first = uri("/a");
    make(1, "a");
    EXPECT_EQ(compare(first, first), kEqual);
    EXPECT_EQ(compare(first, row_of({1})), kFailed);
    for (int i = 0; i < 20; ++i) {
        const Vlist second = uri("/b");
        const int32_t ahead = compare(first, second);
        EXPECT_TRUE(ahead == kLess || ahead == kGreater) << ahead;
        EXPECT_EQ(compare(second, first), ahead == kLess ? kGreater : kLess);
    }
}

TEST_F(VtableSorterTree, AComparisonThatFailsIsNeitherOfTheThree) {
    Vlist text(oru_do_vlist_new());
    oru_do_vlist_add_string(text.get(), "t");
    for (const char *directions : {"a", "d", "s"}) {
        make(1, directions);
        EXPECT_EQ(compare(row_of({1}), text), kFailed) << directions;
        EXPECT_EQ(compare(text, row_of({1})), kFailed) << directions;
    }
    EXPECT_EQ(compare(row_of({1}), row_of({1})), kFailed);  // no strings
    EXPECT_EQ(compare(text, text), kEqual);
}

}  // namespace
