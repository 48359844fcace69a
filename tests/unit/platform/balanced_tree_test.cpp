#include <gtest/gtest.h>
#include <oruplatform/balanced_tree.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "nothing_live.h"

namespace {

constexpr int kFailing = -99;  // a comparison that meets this number fails
int g_compares = 0;

int32_t compare_numbers(const void *a, const void *b) {
    const int x = *static_cast<const int *>(a);
    const int y = *static_cast<const int *>(b);
    g_compares++;
    if (x == kFailing || y == kFailing) {
        return -1;
    }
    return x == y ? BALANCED_TREE_EQUAL : x < y ? BALANCED_TREE_LESS : BALANCED_TREE_GREATER;
}

int32_t collect(void *object, void *context) {
    static_cast<std::vector<int> *>(context)->push_back(*static_cast<int *>(object));
    return 1;
}

struct BalancedTree : NothingLive {
    BalancedTree() { EXPECT_EQ(balanced_tree_init(compare_numbers, 0, &tree), 0); }
    void TearDown() override {
        EXPECT_EQ(balanced_tree_shutdown(tree, 0), 0);
        NothingLive::TearDown();
    }
    void *make(int number) {
        void *object = nullptr;
        EXPECT_EQ(balanced_tree_allocate_object(tree, &object, sizeof(int)), 0);
        *static_cast<int *>(object) = number;
        return object;
    }
    void *add(int number) {
        void *object = make(number);
        EXPECT_EQ(balanced_tree_insert(tree, object, 0), 0);
        return object;
    }
    std::vector<int> numbers() {
        std::vector<int> result;
        int32_t status = -1;
        EXPECT_EQ(balanced_tree_walk(tree, collect, &result, &status), 0);
        EXPECT_EQ(status, 0);
        return result;
    }
    // The number found, or minus the code.
    int search(int mode, int key) {
        void *object = nullptr;
        const int32_t code = balanced_tree_search(tree, mode, &key, &object, 0);
        return code == 0 ? *static_cast<int *>(object) : -code;
    }
    void *tree = nullptr;
};

}  // namespace

TEST_F(BalancedTree, EmptyTreeHasNothing) {
    EXPECT_EQ(numbers(), std::vector<int>{});
    EXPECT_EQ(search(1, 5), -2);
    EXPECT_EQ(search(2, 5), -2);
    EXPECT_EQ(search(5, 5), -2);
}

TEST_F(BalancedTree, ObjectsAreZeroedAndAligned) {
    void *object = nullptr;
    ASSERT_EQ(balanced_tree_allocate_object(tree, &object, 100), 0);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(object) % 16, 0u);
    EXPECT_EQ(std::count(static_cast<char *>(object), static_cast<char *>(object) + 100, 0), 100);
}

TEST_F(BalancedTree, AnObjectFindsItsPlaceWhateverWasSearchedBefore) {
    add(10);
    void *twenty = add(20);
    add(30);
    EXPECT_LT(search(BALANCED_TREE_SEARCH_EXACT, 15), 0);
    add(15);
    EXPECT_LT(search(BALANCED_TREE_SEARCH_EXACT, 17), 0);
    add(35);
    EXPECT_LT(search(BALANCED_TREE_SEARCH_EXACT, 17), 0);
    add(5);
    EXPECT_LT(search(BALANCED_TREE_SEARCH_EXACT, 22), 0);
    EXPECT_EQ(balanced_tree_free_object(tree, twenty), 0);
    add(22);
    EXPECT_LT(search(BALANCED_TREE_SEARCH_EXACT, 23), 0);
    void *again = make(22);
    EXPECT_NE(balanced_tree_insert(tree, again, 0), 0);
    EXPECT_LT(search(BALANCED_TREE_SEARCH_EXACT, 1), 0);
    add(1);
    EXPECT_EQ(numbers(), (std::vector<int>{1, 5, 10, 15, 22, 30, 35}));
}

TEST_F(BalancedTree, WalksInOrder) {
    for (int number : {30, 10, 20, 50, 40}) {
        add(number);
    }
    EXPECT_EQ(numbers(), (std::vector{10, 20, 30, 40, 50}));
}

TEST_F(BalancedTree, WalkEndsWhenTheFunctionGivesZero) {
    add(1), add(2);
    int32_t status = -1;
    int calls = 0;
    EXPECT_EQ(balanced_tree_walk(
                  tree,
                  [](void *, void *context) -> int32_t {
                      ++*static_cast<int *>(context);
                      return 0;
                  },
                  &calls, &status),
              0);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(status, 1);
}

TEST_F(BalancedTree, WalkAcceptsANullStatusAndFreeingTheCurrentObject) {
    for (int i = 0; i < 100; i++) {
        add(i * 37 % 100);
    }
    EXPECT_EQ(balanced_tree_walk(
                  tree,
                  [](void *object, void *context) -> int32_t {
                      EXPECT_EQ(balanced_tree_free_object(context, object), 0);
                      return 1;
                  },
                  tree, nullptr),
              0);
    EXPECT_EQ(numbers(), std::vector<int>{});
}

TEST_F(BalancedTree, SearchModes) {
    add(10), add(20), add(30);
    EXPECT_EQ(search(0, 20), 20);
    EXPECT_EQ(search(1, 20), 20);
    EXPECT_EQ(search(1, 15), -2);
    EXPECT_EQ(search(2, 20), 20);
    EXPECT_EQ(search(2, 15), 20);
    EXPECT_EQ(search(2, 31), -2);
    EXPECT_EQ(search(3, 20), 30);
    EXPECT_EQ(search(3, 9), 10);
    EXPECT_EQ(search(3, 30), -2);
    EXPECT_EQ(search(4, 20), 20);
    EXPECT_EQ(search(4, 29), 20);
    EXPECT_EQ(search(4, 9), -2);
    EXPECT_EQ(search(5, 20), 10);
    EXPECT_EQ(search(5, 99), 30);
    EXPECT_EQ(search(5, 10), -2);
    EXPECT_EQ(search(6, 20), -22);
    EXPECT_EQ(search(-1, 20), -22);
}

TEST_F(BalancedTree, FailedSearchLeavesTheOutAlone) {
    void *object = &tree;
    int key = 1;
    EXPECT_EQ(balanced_tree_search(tree, 1, &key, &object, 0), 2);
    EXPECT_EQ(object, &tree);
}

TEST_F(BalancedTree, EqualObjectIsRefusedAndStaysAllocated) {
    void *first = add(7);
    void *second = make(7);
    EXPECT_EQ(balanced_tree_insert(tree, second, 0), 17);
    EXPECT_EQ(numbers(), (std::vector{7}));
    *static_cast<int *>(second) = 8;
    EXPECT_EQ(balanced_tree_insert(tree, second, 0), 0);
    EXPECT_EQ(numbers(), (std::vector{7, 8}));
    EXPECT_EQ(balanced_tree_free_object(tree, first), 0);
    EXPECT_EQ(numbers(), (std::vector{8}));
}

TEST_F(BalancedTree, FailedInsertsObjectCanBeFreed) {
    add(7);
    void *object = make(7);
    EXPECT_EQ(balanced_tree_insert(tree, object, 0), 17);
    const uint64_t blocks = poolheap_live_blocks();
    EXPECT_EQ(balanced_tree_free_object(tree, object), 0);
    EXPECT_EQ(poolheap_live_blocks(), blocks - 1);
}

TEST_F(BalancedTree, FailedComparisonEndsWith22) {
    add(1);
    void *object = make(kFailing);
    EXPECT_EQ(balanced_tree_insert(tree, object, 0), 22);
    EXPECT_EQ(search(1, kFailing), -22);
    EXPECT_EQ(search(2, kFailing), -22);
    EXPECT_EQ(numbers(), (std::vector{1}));
}

TEST_F(BalancedTree, ThreeIsAFailedComparisonToo) {
    void *other = nullptr;
    ASSERT_EQ(
        balanced_tree_init([](const void *, const void *) -> int32_t { return 3; }, 0, &other), 0);
    void *a = nullptr, *b = nullptr;
    balanced_tree_allocate_object(other, &a, 1);
    balanced_tree_allocate_object(other, &b, 1);
    EXPECT_EQ(balanced_tree_insert(other, a, 0), 0);
    EXPECT_EQ(balanced_tree_insert(other, b, 0), 22);
    EXPECT_EQ(balanced_tree_shutdown(other, 0), 0);
}

TEST_F(BalancedTree, NewObjectOrKeyIsTheFirstArgument) {
    static const void *first, *second;
    void *other = nullptr;
    balanced_tree_init(
        [](const void *a, const void *b) -> int32_t {
            first = a, second = b;
            return BALANCED_TREE_LESS;
        },
        0, &other);
    void *a = nullptr, *b = nullptr, *found = nullptr;
    balanced_tree_allocate_object(other, &a, 1);
    balanced_tree_allocate_object(other, &b, 1);
    balanced_tree_insert(other, a, 0);
    balanced_tree_insert(other, b, 0);
    EXPECT_EQ(first, b);
    EXPECT_EQ(second, a);
    EXPECT_EQ(balanced_tree_search(other, 1, nullptr, &found, 0), 2);
    EXPECT_EQ(first, nullptr);
    balanced_tree_shutdown(other, 0);
}

TEST_F(BalancedTree, StaysBalancedOnSortedInput) {
    for (int i = 0; i < 4096; i++) {
        add(i);
    }
    // A height-balanced tree of 4096 objects is at most 1.44 * log2(4098) = 17 high.
    for (int key : {0, 2047, 4095}) {
        g_compares = 0;
        EXPECT_EQ(search(1, key), key);
        EXPECT_LE(g_compares, 17);
    }
}

TEST_F(BalancedTree, RandomInsertsAndRemovalsKeepOrderAndBalance) {
    std::mt19937 random(12345);
    std::vector<int> order(2000);
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), random);
    std::vector<void *> objects(order.size());
    for (int number : order) {
        objects[static_cast<size_t>(number)] = add(number);
    }
    std::shuffle(order.begin(), order.end(), random);
    for (size_t i = 0; i < 1500; i++) {
        ASSERT_EQ(balanced_tree_free_object(tree, objects[static_cast<size_t>(order[i])]), 0);
    }
    std::vector<int> left(order.begin() + 1500, order.end());
    std::sort(left.begin(), left.end());
    EXPECT_EQ(numbers(), left);
    // 500 objects: at most 1.44 * log2(502) = 12 high.
    for (int number : left) {
        g_compares = 0;
        ASSERT_EQ(search(1, number), number);
        ASSERT_LE(g_compares, 12);
    }
}

TEST_F(BalancedTree, InconsistentComparisonDoesNoHarm) {
    void *other = nullptr;
    static unsigned state;
    state = 1;
    balanced_tree_init(
        [](const void *, const void *) -> int32_t {
            state = state * 1103515245u + 12345u;
            return (state >> 16 & 1) != 0 ? BALANCED_TREE_LESS : BALANCED_TREE_GREATER;
        },
        0, &other);
    std::vector<void *> objects(300);
    for (void *&object : objects) {
        balanced_tree_allocate_object(other, &object, sizeof(int));
        ASSERT_EQ(balanced_tree_insert(other, object, 0), 0);
    }
    for (void *object : objects) {
        ASSERT_EQ(balanced_tree_free_object(other, object), 0);
    }
    EXPECT_EQ(balanced_tree_shutdown(other, 0), 0);
}

TEST_F(BalancedTree, ShutdownFreesObjectsThatWereNeverInserted) {
    make(1), make(2), make(3);
    add(4);
}

TEST_F(BalancedTree, BadArgumentsGive22) {
    void *object = make(1);
    int key = 1;
    EXPECT_EQ(balanced_tree_init(nullptr, 0, &tree), 22);
    EXPECT_EQ(balanced_tree_init(compare_numbers, 0, nullptr), 22);
    EXPECT_EQ(balanced_tree_allocate_object(nullptr, &object, 4), 22);
    EXPECT_EQ(balanced_tree_allocate_object(tree, nullptr, 4), 22);
    EXPECT_EQ(balanced_tree_insert(nullptr, object, 0), 22);
    EXPECT_EQ(balanced_tree_insert(tree, nullptr, 0), 22);
    EXPECT_EQ(balanced_tree_search(nullptr, 1, &key, &object, 0), 22);
    EXPECT_EQ(balanced_tree_search(tree, 1, &key, nullptr, 0), 22);
    EXPECT_EQ(balanced_tree_walk(nullptr, collect, nullptr, nullptr), 22);
    EXPECT_EQ(balanced_tree_walk(tree, nullptr, nullptr, nullptr), 22);
    EXPECT_EQ(balanced_tree_free_object(nullptr, object), 22);
    EXPECT_EQ(balanced_tree_free_object(tree, nullptr), 22);
    EXPECT_EQ(balanced_tree_shutdown(nullptr, 0), 22);
}

TEST_F(BalancedTree, AnotherTreesObjectAndASecondInsertAreRefused) {
    void *other = nullptr;
    balanced_tree_init(compare_numbers, 0, &other);
    void *object = add(1);
    EXPECT_EQ(balanced_tree_insert(tree, object, 0), 22);
    EXPECT_EQ(balanced_tree_insert(other, object, 0), 22);
    EXPECT_EQ(balanced_tree_free_object(other, object), 22);
    EXPECT_EQ(numbers(), (std::vector{1}));
    balanced_tree_shutdown(other, 0);
}

TEST_F(BalancedTree, NoMemoryGives12) {
    void *other = &tree;
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(balanced_tree_init(compare_numbers, 0, &other), 12);
    EXPECT_EQ(other, &tree);
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(balanced_tree_allocate_object(tree, &other, 8), 12);
    EXPECT_EQ(other, &tree);
    poolheap_fail_off();
    EXPECT_EQ(balanced_tree_allocate_object(tree, &other, SIZE_MAX), 12);
    EXPECT_EQ(numbers(), std::vector<int>{});
}
