#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <initializer_list>
#include <vector>

#include "oru/error.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"

namespace {

ORUDoErrorList *list_of(std::initializer_list<int32_t> codes) {
    ORUDoErrorList *list = oru_do_error_list_new();
    for (const int32_t code : codes) {
        ORUDoError *err = oru_do_error_new(code, nullptr);
        oru_do_error_list_add(list, err);
        oru_do_error_deref(err);
    }
    return list;
}

std::vector<int32_t> codes_of(ORUDoErrorList *list) {
    std::vector<int32_t> codes;
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    for (oru_do_error_list_iter(list, &iter); oru_do_error_list_has_next(&iter) != 0;)
        codes.push_back(oru_do_error_get_code(oru_do_error_list_get_next(&iter)));
    EXPECT_EQ(oru_do_error_list_get_next(&iter), nullptr);
    return codes;
}

class ErrorList : public testing::Test {
  protected:
    ~ErrorList() override { oru_do_error_list_deref(list); }
    ORUDoErrorList *list = list_of({1, 2, 3});
};

TEST_F(ErrorList, AddingGivesTheNewLength) {
    ORUDoError *err = oru_do_error_new(4, nullptr);
    EXPECT_EQ(oru_do_error_list_get_len(list), 3);
    EXPECT_EQ(oru_do_error_list_add(list, err), 4);
    EXPECT_EQ(oru_do_error_list_add(list, err), 5);
    oru_do_error_deref(err);
    EXPECT_EQ(codes_of(list), (std::vector<int32_t>{1, 2, 3, 4, 4}));
    EXPECT_EQ(oru_do_error_list_get_len(list), 5);
}

TEST_F(ErrorList, ANullArgumentIsNotAdded) {
    ORUDoError *err = oru_do_error_list_get_error(list, 0);
    EXPECT_EQ(oru_do_error_list_add(nullptr, err), -1);
    EXPECT_EQ(oru_do_error_list_add(list, nullptr), -1);
    EXPECT_EQ(oru_do_error_list_get_len(list), 3);
    EXPECT_EQ(oru_do_error_list_get_len(nullptr), -1);
}

TEST_F(ErrorList, TakesAllOfAnother) {
    ORUDoErrorList *other = list_of({4, 5});
    EXPECT_EQ(oru_do_error_list_add_all(list, other), 5);
    oru_do_error_list_deref(other);
    EXPECT_EQ(codes_of(list), (std::vector<int32_t>{1, 2, 3, 4, 5}));
    EXPECT_EQ(oru_do_error_list_add_all(list, list), 10);
    EXPECT_EQ(codes_of(list), (std::vector<int32_t>{1, 2, 3, 4, 5, 1, 2, 3, 4, 5}));
}

TEST_F(ErrorList, SkipsWhatMemoryRunsOutFor) {
    ORUDoErrorList *other = list_of({4, 5, 6});
    poolheap_fail_nth(2, 0);
    EXPECT_EQ(oru_do_error_list_add_all(list, other), 5);
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_do_error_list_add(list, oru_do_error_list_get_error(other, 0)), -1);
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_do_error_list_new(), nullptr);
    poolheap_fail_off();
    EXPECT_EQ(codes_of(list), (std::vector<int32_t>{1, 2, 3, 4, 6}));
    oru_do_error_list_deref(other);
}

TEST_F(ErrorList, IsReadByIndex) {
    EXPECT_EQ(oru_do_error_get_code(oru_do_error_list_get_error(list, 0)), 1);
    EXPECT_EQ(oru_do_error_get_code(oru_do_error_list_get_error(list, 2)), 3);
    EXPECT_EQ(oru_do_error_list_get_error(list, 3), nullptr);
    EXPECT_EQ(oru_do_error_list_get_error(list, -1), nullptr);
}

TEST_F(ErrorList, IsUsableAfterItWasCleared) {
    oru_do_error_list_clear(list);
    EXPECT_EQ(oru_do_error_list_get_len(list), 0);
    EXPECT_EQ(oru_do_error_list_get_error(list, 0), nullptr);
    ORUDoError *err = oru_do_error_new(7, nullptr);
    EXPECT_EQ(oru_do_error_list_add(list, err), 1);
    oru_do_error_deref(err);
    EXPECT_EQ(codes_of(list), (std::vector<int32_t>{7}));
    oru_do_error_list_clear(nullptr);
}

TEST_F(ErrorList, EqualsAnotherPairByPair) {
    const auto equals = [this](std::initializer_list<int32_t> codes) {
        ORUDoErrorList *other = list_of(codes);
        const int32_t result = oru_do_error_list_equals(list, other);
        EXPECT_EQ(oru_do_error_list_equals(other, list), result);
        oru_do_error_list_deref(other);
        return result != 0;
    };
    EXPECT_TRUE(equals({1, 2, 3}));
    EXPECT_FALSE(equals({1, 3, 2}));
    EXPECT_FALSE(equals({1, 2}));
    EXPECT_FALSE(equals({1, 2, 3, 3}));
    EXPECT_FALSE(equals({}));
    oru_do_error_list_clear(list);
    EXPECT_TRUE(equals({}));
}

TEST_F(ErrorList, TheRecordHasItsFieldsInOrder) {
    struct Item {
        ORUDoError *err;
        Item *next;
    };
    struct Record {
        Item *head;
        Item *tail;
        uint32_t len;
        uint32_t ref;
    };
    const auto &fields = *reinterpret_cast<Record *>(list);
    EXPECT_EQ(fields.len, 3u);
    EXPECT_EQ(fields.ref, 1u);
    EXPECT_EQ(oru_do_error_get_code(fields.head->err), 1);
    EXPECT_EQ(fields.head->next->next, fields.tail);
    EXPECT_EQ(oru_do_error_get_code(fields.tail->err), 3);
    EXPECT_EQ(fields.tail->next, nullptr);
}

TEST_F(ErrorList, HoldsAReferenceToEachError) {
    ORUDoError *err = oru_do_error_new(9, "held");
    const uint32_t *count = reinterpret_cast<uint32_t *>(reinterpret_cast<char **>(err) + 4);
    EXPECT_EQ(*count, 1u);
    oru_do_error_list_add(list, err);
    EXPECT_EQ(*count, 2u);
    ORUDoErrorList *other = oru_do_error_list_new();
    oru_do_error_list_add_all(other, list);
    EXPECT_EQ(*count, 3u);
    oru_do_error_list_clear(list);
    EXPECT_EQ(*count, 2u);
    oru_do_error_list_deref(other);
    EXPECT_EQ(*count, 1u);
    oru_do_error_deref(err);
}

TEST_F(ErrorList, ItemsAreBlocksOfTheirTag) {
    poolheap_stats_t stats{};
    poolheap_tag_stats(0x2900036, &stats);
    EXPECT_EQ(stats.live_blocks, 3u);
}

TEST_F(ErrorList, RequiredArgumentsAreNamed) {
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    EXPECT_ASSERTION(oru_do_error_list_add_all(nullptr, list), "dst");
    EXPECT_ASSERTION(oru_do_error_list_add_all(list, nullptr), "src");
    EXPECT_ASSERTION(oru_do_error_list_iter(nullptr, &iter), "list");
    EXPECT_ASSERTION(oru_do_error_list_iter(list, nullptr), "iter");
    EXPECT_ASSERTION(oru_do_error_list_has_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_error_list_has_next(&iter), "iter->coll_type == DO_COLL_ERROR_LIST");
    EXPECT_ASSERTION(oru_do_error_list_get_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_error_list_get_error(nullptr, 0), "list");
    EXPECT_ASSERTION(oru_do_error_list_equals(nullptr, list), "errlist1");
    EXPECT_ASSERTION(oru_do_error_list_equals(list, nullptr), "errlist2");
    EXPECT_EQ(oru_do_error_list_ref(nullptr), nullptr);
    oru_do_error_list_deref(nullptr);
}

TEST(ErrorListMemory, EveryAllocationMayFail) {
    oru::test::sweep_oom(
        [] {
            ORUDoErrorList *list = oru_do_error_list_new();
            if (list == nullptr)
                return;
            int32_t length = 0;
            for (int32_t code = 1; code < 4; ++code) {
                ORUDoError *err = oru_do_error_new(code, "text");
                const int32_t result = oru_do_error_list_add(list, err);
                EXPECT_TRUE(result == -1 || result == ++length);
                oru_do_error_deref(err);
            }
            EXPECT_EQ(oru_do_error_list_get_len(list), length);
            oru_do_error_list_deref(list);
        },
        {.promised_deaths = {}, .at_least = 10});
}

}  // namespace
