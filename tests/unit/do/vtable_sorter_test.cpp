#include "oru/vtable_sorter.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "oru/value.h"
#include "oru/vlist.h"
#include "oru/vtable.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/owned.h"

namespace {

using oru::test::Vlist;
using Table = std::unique_ptr<ORUDoVtable, oru::test::Deref<oru_do_vtable_deref>>;

Vlist row_of(const std::vector<int32_t> &numbers) {
    Vlist row(oru_do_vlist_new());
    for (const int32_t number : numbers)
        oru_do_vlist_add_int(row.get(), number);
    return row;
}

Vlist row_of(const char *text) {
    Vlist row(oru_do_vlist_new());
    oru_do_vlist_add_string(row.get(), text);
    return row;
}

// A cell as text, whatever its type.
std::string cell(ORUDoVlist *row, int32_t column) {
    const oru::test::Strbuf text(oru_do_strbuf_new());
    oru_do_value_to_strbuf(oru_do_vlist_get_value(row, column), 0, text.get());
    return oru_do_strbuf_to_string(text.get());
}

std::vector<std::string> column_of(ORUDoVtable *table, int32_t column) {
    std::vector<std::string> cells;
    for (int32_t i = 0; i < oru_do_vtable_get_row_num(table); ++i)
        cells.push_back(cell(oru_do_vtable_get(table, i), column));
    return cells;
}

using Cells = std::vector<std::string>;

class VtableSorter : public testing::Test {
  protected:
    ~VtableSorter() override { oru_vtable_sorter_delete(sorter, nullptr); }

    void make(int32_t key_start, int32_t key_count, const char *directions,
              int32_t index_column = -1, int32_t count_column = -1) {
        sorter =
            oru_vtable_sorter_new(key_start, key_count, directions, index_column, count_column);
    }
    int32_t add(const std::vector<int32_t> &numbers) {
        return oru_vtable_sorter_add(sorter, row_of(numbers).get());
    }
    int32_t add(const char *text) { return oru_vtable_sorter_add(sorter, row_of(text).get()); }
    void finish() { oru_vtable_sorter_delete(std::exchange(sorter, nullptr), table.get()); }

    ORUVtableSorter *sorter = nullptr;
    Table table{oru_do_vtable_new()};
};

TEST_F(VtableSorter, OrdersAscendingWithoutDirections) {
    make(0, 1, nullptr);
    for (const int32_t number : {3, 1, 2})
        EXPECT_EQ(add({number}), 0);
    finish();
    EXPECT_EQ(column_of(table.get(), 0), (Cells{"1", "2", "3"}));
}

TEST_F(VtableSorter, DescendingRowsAreNumberedInTheirOrder) {
    make(1, 1, "d", 0);
    for (const int32_t number : {1, 3, 2})
        EXPECT_EQ(add({0, number}), 0);
    finish();
    EXPECT_EQ(column_of(table.get(), 1), (Cells{"3", "2", "1"}));
    EXPECT_EQ(column_of(table.get(), 0), (Cells{"1", "2", "3"}));
    EXPECT_EQ(oru_do_value_get_type(oru_do_vlist_get_value(oru_do_vtable_get(table.get(), 0), 0)),
              ORU_DO_TYPE_UNSIGNED_INT);
}

TEST_F(VtableSorter, RowsOfOneKeyKeepTheOrderOfArrival) {
    make(0, 1, "a", 2);
    EXPECT_EQ(add({5, 1, 0}), 0);
    EXPECT_EQ(add({4, 2, 0}), 0);
    EXPECT_EQ(add({5, 3, 0}), 0);
    finish();
    EXPECT_EQ(column_of(table.get(), 1), (Cells{"2", "1", "3"}));
    EXPECT_EQ(column_of(table.get(), 2), (Cells{"1", "2", "3"}));
}

TEST_F(VtableSorter, LaterKeysDecideAmongEqualOnes) {
    make(0, 2, "ad");
    for (const auto &row : std::vector<std::vector<int32_t>>{{2, 1}, {1, 1}, {2, 2}, {1, 2}})
        EXPECT_EQ(add(row), 0);
    finish();
    EXPECT_EQ(column_of(table.get(), 0), (Cells{"1", "1", "2", "2"}));
    EXPECT_EQ(column_of(table.get(), 1), (Cells{"2", "1", "2", "1"}));
}

TEST_F(VtableSorter, ShorterTextsComeFirstUnderTheLengthDirection) {
    make(0, 1, "s");
    for (const char *text : {"aa", "b", "ab", "a"})
        EXPECT_EQ(add(text), 0);
    finish();
    EXPECT_EQ(column_of(table.get(), 0), (Cells{"a", "b", "aa", "ab"}));
}

TEST_F(VtableSorter, UnknownDirectionsAreAscending) {
    make(0, 1, "x");
    EXPECT_EQ(add({2}), 0);
    EXPECT_EQ(add({1}), 0);
    finish();
    EXPECT_EQ(column_of(table.get(), 0), (Cells{"1", "2"}));
}

// What is missing in a text that is too short is ascending, what is too much is not looked at.
TEST_F(VtableSorter, DirectionsMayHaveAnotherLengthThanTheKeys) {
    make(0, 2, "d");
    for (const auto &row : std::vector<std::vector<int32_t>>{{1, 2}, {2, 2}, {1, 1}})
        EXPECT_EQ(add(row), 0);
    finish();
    EXPECT_EQ(column_of(table.get(), 0), (Cells{"2", "1", "1"}));
    EXPECT_EQ(column_of(table.get(), 1), (Cells{"2", "1", "2"}));

    table.reset(oru_do_vtable_new());
    make(0, 1, "ddd");
    EXPECT_EQ(add({1}), 0);
    EXPECT_EQ(add({2}), 0);
    finish();
    EXPECT_EQ(column_of(table.get(), 0), (Cells{"2", "1"}));
}

TEST_F(VtableSorter, WithoutKeysAllRowsAreEqual) {
    for (const int32_t keys : {0, -1}) {
        table.reset(oru_do_vtable_new());
        make(0, keys, "d");
        for (const int32_t number : {2, 3, 1})
            EXPECT_EQ(add({number}), 0);
        finish();
        EXPECT_EQ(column_of(table.get(), 0), (Cells{"2", "3", "1"}));
    }
}

TEST_F(VtableSorter, EveryRowGetsTheCountOfAll) {
    make(0, 1, nullptr, -1, 1);
    for (const int32_t number : {5, 4, 3, 2, 1})
        EXPECT_EQ(add({number, 0}), 0);
    finish();
    EXPECT_EQ(column_of(table.get(), 1), (Cells{"5", "5", "5", "5", "5"}));
}

TEST_F(VtableSorter, RowsTooShortForAColumnStayAsTheyAre) {
    make(0, 1, nullptr, 1, 2);
    EXPECT_EQ(add({2}), 0);
    EXPECT_EQ(add({1, 0, 0}), 0);
    finish();
    EXPECT_EQ(oru_do_vlist_get_len(oru_do_vtable_get(table.get(), 1)), 1);
    EXPECT_EQ(cell(oru_do_vtable_get(table.get(), 0), 1), "1");
    EXPECT_EQ(cell(oru_do_vtable_get(table.get(), 0), 2), "2");
}

// The new row's key is the one that is compared, and a missing one is less.
TEST_F(VtableSorter, AMissingKeySortsFirst) {
    make(0, 2, nullptr);
    EXPECT_EQ(add({1, 1}), 0);
    EXPECT_EQ(add({1}), 0);
    finish();
    EXPECT_EQ(oru_do_vlist_get_len(oru_do_vtable_get(table.get(), 0)), 1);
    EXPECT_EQ(oru_do_vlist_get_len(oru_do_vtable_get(table.get(), 1)), 2);
}

TEST_F(VtableSorter, KeysThatCannotBeComparedFailAndCount) {
    make(0, 1, nullptr, -1, 1);
    EXPECT_EQ(add({1, 0}), 0);
    EXPECT_EQ(add("text"), 10000);
    EXPECT_EQ(add({2, 0}), 0);
    finish();
    EXPECT_EQ(column_of(table.get(), 0), (Cells{"1", "2"}));
    EXPECT_EQ(column_of(table.get(), 1), (Cells{"3", "3"}));
}

TEST_F(VtableSorter, TheLengthDirectionIsForStringsOnly) {
    make(0, 1, "s");
    EXPECT_EQ(add({1}), 0);
    EXPECT_EQ(add({2}), 10000);
    EXPECT_EQ(add("text"), 10000);
}

// Two records of one text are ordered by where they lie, so only the number of rows is known.
TEST_F(VtableSorter, RowsAreFiledUnderUris) {
    make(0, 1, nullptr);
    const oru::test::Value shared(
        oru_do_value_new_mr_uri(oru::test::Uri(oru_do_uri_new("/shared")).get()));
    for (int i = 0; i < 40; ++i) {
        const Vlist row(oru_do_vlist_new());
        oru_do_vlist_add_mr_uri(row.get(), oru::test::Uri(oru_do_uri_new("/a")).get());
        EXPECT_EQ(oru_vtable_sorter_add(sorter, row.get()), 0);
        const Vlist same(oru_do_vlist_new());
        oru_do_vlist_add(same.get(), shared.get());
        EXPECT_EQ(oru_vtable_sorter_add(sorter, same.get()), 0);
    }
    finish();
    EXPECT_EQ(oru_do_vtable_get_row_num(table.get()), 80);
}

TEST_F(VtableSorter, TextsGoByTheirLengthFirstInEveryDirection) {
    make(0, 1, "d");
    for (const char *text : {"b", "aa", "b"})
        EXPECT_EQ(add(text), 0);
    finish();
    EXPECT_EQ(column_of(table.get(), 0), (Cells{"aa", "b", "b"}));
}

TEST_F(VtableSorter, IntegersOfAllTypesGoByTheirNumbers) {
    const auto fill = [this] {
        for (const uint64_t number : {UINT64_MAX, uint64_t{1} << 63, uint64_t{7}}) {
            Vlist row(oru_do_vlist_new());
            oru_do_vlist_add_unsigned_long(row.get(), number);
            EXPECT_EQ(oru_vtable_sorter_add(sorter, row.get()), 0);
        }
        for (const int64_t number : {INT64_MAX, INT64_MIN, int64_t{-1}}) {
            Vlist row(oru_do_vlist_new());
            oru_do_vlist_add_long(row.get(), number);
            EXPECT_EQ(oru_vtable_sorter_add(sorter, row.get()), 0);
        }
        EXPECT_EQ(add({8}), 0);
        EXPECT_EQ(add({7}), 0);
        EXPECT_EQ(add({-2}), 0);
        finish();
    };
    Cells ordered{"-9223372036854775808",
                  "-2",
                  "-1",
                  "7",
                  "7",
                  "8",
                  "9223372036854775807",
                  "9223372036854775808",
                  "18446744073709551615"};
    make(0, 1, "a");
    fill();
    EXPECT_EQ(column_of(table.get(), 0), ordered);
    oru_do_vtable_clear(table.get());
    make(0, 1, "d");
    fill();
    std::reverse(ordered.begin(), ordered.end());
    EXPECT_EQ(column_of(table.get(), 0), ordered);
}

TEST_F(VtableSorter, TextsWithALongBeginningInCommon) {
    const std::string common(16, 'x');
    const std::string longer(70000, 'y');
    const Cells unordered{common + "b", longer + "b", "b",    common + "a", "",        "\xff",
                          longer + "a", "a",          common, "0123456b",   "0123456a"};
    Cells ordered{"",     "a",          "b",          "\xff",       "0123456a",  "0123456b",
                  common, common + "a", common + "b", longer + "a", longer + "b"};
    for (const char *direction : {"a", "d"}) {
        make(0, 1, direction);
        for (const std::string &text : unordered)
            EXPECT_EQ(add(text.c_str()), 0);
        finish();
        EXPECT_EQ(column_of(table.get(), 0), ordered) << direction;
        oru_do_vtable_clear(table.get());
        std::reverse(ordered.begin(), ordered.end());
    }
}

TEST_F(VtableSorter, KeysStandBehindTheColumns) {
    make(1, 2, "da");
    for (const auto &row : std::vector<std::vector<int32_t>>{{1, 5, 2}, {2, 6, 1}, {3, 5, 1}})
        EXPECT_EQ(add(row), 0);
    finish();
    EXPECT_EQ(column_of(table.get(), 0), (Cells{"2", "3", "1"}));
}

TEST_F(VtableSorter, WithoutKeysANullRowOnlyCounts) {
    make(0, 0, nullptr, -1, 0);
    EXPECT_EQ(oru_vtable_sorter_add(sorter, nullptr), 0);
    EXPECT_EQ(add({9}), 0);
    finish();
    EXPECT_EQ(column_of(table.get(), 0), Cells{"2"});
}

TEST_F(VtableSorter, RowsAreTheCallersOwn) {
    make(0, 1, nullptr, 0);
    const Vlist row = row_of({7});
    EXPECT_EQ(oru_vtable_sorter_add(sorter, row.get()), 0);
    finish();
    EXPECT_EQ(oru_do_vtable_get(table.get(), 0), row.get());
    EXPECT_EQ(cell(row.get(), 0), "1");
}

TEST_F(VtableSorter, WithoutATableEverythingIsReleased) {
    make(0, 1, nullptr, 0);
    const Vlist row = row_of({7});
    EXPECT_EQ(oru_vtable_sorter_add(sorter, row.get()), 0);
    oru_vtable_sorter_delete(std::exchange(sorter, nullptr), nullptr);
    EXPECT_EQ(cell(row.get(), 0), "7");
}

TEST_F(VtableSorter, AnEmptyOneHandsNothingOver) {
    make(0, 1, nullptr);
    finish();
    EXPECT_EQ(oru_do_vtable_get_row_num(table.get()), 0);
    oru_vtable_sorter_delete(nullptr, table.get());
}

TEST_F(VtableSorter, RequiredArgumentsAreAsserted) {
    make(0, 1, nullptr);
    EXPECT_ASSERTION(oru_vtable_sorter_add(nullptr, nullptr), "sorter");
    EXPECT_ASSERTION(oru_vtable_sorter_add(sorter, nullptr), "vlist");
}

// Rows that are filed and rows that are not: each add tells, and all of them count.
TEST(VtableSorterMemory, EveryAllocationMayFail) {
    const Vlist rows[] = {row_of({1, 0, 0}), row_of({2, 0, 0}), row_of({1, 0, 0})};
    oru::test::sweep_oom(
        [&rows] {
            ORUVtableSorter *sorter = oru_vtable_sorter_new(0, 1, "d", 1, 2);
            EXPECT_TRUE(sorter != nullptr || oru::test::oom_hit());
            if (sorter == nullptr)
                return;
            for (const Vlist &row : rows) {
                const bool hit = oru::test::oom_hit();
                const int32_t code = oru_vtable_sorter_add(sorter, row.get());
                EXPECT_TRUE(code == 0 || (code == 10002 && oru::test::oom_hit()));
                EXPECT_TRUE(code == 0 || hit || oru::test::oom_hit());
            }
            const Table table(oru_do_vtable_new());
            oru_vtable_sorter_delete(sorter, table.get());
            if (table == nullptr || oru::test::oom_hit())
                return;
            const int32_t keys[] = {2, 1, 1};
            for (int32_t i = 0; i < 3; ++i) {
                int32_t rc = 0;
                ORUDoVlist *row = oru_do_vtable_get(table.get(), i);
                EXPECT_EQ(oru_do_value_get_int(oru_do_vlist_get_value(row, 0), &rc), keys[i]);
                EXPECT_EQ(oru_do_value_get_unsigned_int(oru_do_vlist_get_value(row, 1), &rc),
                          static_cast<uint32_t>(i + 1));
                EXPECT_EQ(oru_do_value_get_unsigned_int(oru_do_vlist_get_value(row, 2), &rc), 3u);
            }
        },
        {.promised_deaths = {}, .at_least = 25});
}

}  // namespace
