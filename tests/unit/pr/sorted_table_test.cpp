#include <oruplatform/poolheap.h>

#include <cstring>

#include "oru/pr_walk.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/unit/pr/pr_support.h"

namespace {

using oru::test::names_in;
using oru::test::names_of;
using oru::test::Nlist;
using oru::test::Nvlist;
using oru::test::oom_hit;
using oru::test::values_in;
using oru::test::Vlist;
using oru::test::Vtable;
using oru::test::where_of;

using Texts = std::vector<std::string>;
using Rows = std::vector<Texts>;

struct Batch {
    int32_t code;
    std::vector<std::vector<int32_t>> rows;
};

// A handler that gives its batches one by one and looks at what it is asked.
struct Provider {
    ORUPrCrudxHandler table{};
    std::vector<Batch> batches;
    size_t next = 0;
    Texts asked;
    Texts complaints;
    ORUDoUri *uri = nullptr;
    ORUDoNvlist *where = nullptr;

    Provider() { table.get_next = give; }

    void expect(bool holds, const char *what) {
        if (!holds)
            complaints.emplace_back(what);
    }

    static int32_t give(ORUPrCrudxHandler *handler, ORUDoUri *uri, ORUDoNlist *nlist,
                        ORUDoNvlist *where, ORUDoNlist *order, int32_t count, ORUDoVtable *table,
                        ORUDoVlist *iter_context) {
        auto &self = *reinterpret_cast<Provider *>(handler);
        self.asked = names_in(nlist);
        self.expect(uri == self.uri, "uri");
        self.expect(where == self.where, "where");
        self.expect(order != nullptr && oru_do_nlist_get_len(order) == 0, "order");
        self.expect(count == 0, "count");
        self.expect(oru_do_vtable_get_row_num(table) == 0, "table");
        // One list for the whole walk.
        self.expect(oru_do_vlist_get_len(iter_context) == static_cast<int32_t>(self.next), "walk");
        oru_do_vlist_add_null(iter_context);
        const Batch &batch = self.batches[self.next++];
        for (const auto &numbers : batch.rows) {
            const Vlist row(oru_do_vlist_new());
            if (!row)
                continue;
            for (const int32_t number : numbers)
                oru_do_vlist_add_int(row.get(), number);
            oru_do_vtable_add(table, row.get());
        }
        return batch.code;
    }
};

class PrSortedTable : public testing::Test {
  public:
    int32_t ask(const std::vector<const char *> &attrs, const std::vector<const char *> &order,
                const std::vector<const char *> &keys = {"k"}) {
        const Nlist names = names_of(attrs);
        const Nlist by = names_of(order);
        provider.uri = uri.get();
        return oru_pr_get_sorted_vtable(&provider.table, uri.get(), names.get(), provider.where,
                                        by.get(), static_cast<int32_t>(keys.size()), keys.data(),
                                        result.get());
    }
    Rows rows() {
        Rows all;
        for (int32_t i = 0; i < oru_do_vtable_get_row_num(result.get()); ++i)
            all.push_back(values_in(oru_do_vtable_get(result.get(), i)));
        return all;
    }

    oru::test::Uri uri{oru_do_uri_new("/a?b")};
    Provider provider;
    Vtable result{oru_do_vtable_new()};
};

TEST_F(PrSortedTable, RowsInTheOrderOfTheKeysAreNumberedAsTheyArrive) {
    provider.batches = {{0, {{3, 0, 0, 3}, {1, 0, 0, 1}}}, {0, {}}, {1, {{2, 0, 0, 2}}}};
    EXPECT_EQ(ask({"k", "_resultIndex", "_resultCount"}, {"k"}), ORU_OK);
    // The count is that of the batch.
    EXPECT_EQ(rows(), (Rows{{"3", "1", "2", "3"}, {"1", "2", "2", "1"}, {"2", "3", "1", "2"}}));
    EXPECT_EQ(oru_do_value_get_type(oru_do_vlist_get_value(oru_do_vtable_get(result.get(), 0), 1)),
              ORU_DO_TYPE_UNSIGNED_INT);
    EXPECT_EQ(oru_do_value_get_type(oru_do_vlist_get_value(oru_do_vtable_get(result.get(), 0), 2)),
              ORU_DO_TYPE_UNSIGNED_INT);
    EXPECT_EQ(provider.asked, (Texts{"k", "_resultIndex", "_resultCount", "k"}));
    EXPECT_EQ(provider.complaints, Texts{});
    EXPECT_EQ(provider.next, 3u);
}

TEST_F(PrSortedTable, WithoutAnOrderRowsStayAsTheyArrive) {
    provider.batches = {{1, {{3}, {1}}}};
    EXPECT_EQ(ask({"k"}, {}), ORU_OK);
    EXPECT_EQ(rows(), (Rows{{"3"}, {"1"}}));
    const Nlist names = names_of({"k"});
    provider.next = 0;
    EXPECT_EQ(oru_pr_get_sorted_vtable(&provider.table, uri.get(), names.get(), nullptr, nullptr, 0,
                                       nullptr, result.get()),
              ORU_OK);
    EXPECT_EQ(rows(), (Rows{{"3"}, {"1"}, {"3"}, {"1"}}));
}

TEST_F(PrSortedTable, AnotherOrderSortsTheWholeWalk) {
    provider.batches = {{0, {{1, 0, 0, 8}, {2, 0, 0, 9}}}, {1, {{3, 0, 0, 7}}}};
    EXPECT_EQ(ask({"k", "_resultIndex", "_resultCount"}, {"mtu"}), ORU_OK);
    EXPECT_EQ(rows(), (Rows{{"3", "1", "3", "7"}, {"1", "2", "3", "8"}, {"2", "3", "3", "9"}}));
    EXPECT_EQ(provider.asked, (Texts{"k", "_resultIndex", "_resultCount", "mtu"}));
    EXPECT_EQ(provider.complaints, Texts{});
}

TEST_F(PrSortedTable, DirectionsCountForEachName) {
    provider.batches = {{1, {{1, 5, 1}, {2, 6, 1}, {3, 5, 2}, {4, 6, 0}}}};
    EXPECT_EQ(ask({"k"}, {"a desc", "b"}), ORU_OK);
    EXPECT_EQ(rows(), (Rows{{"4", "6", "0"}, {"2", "6", "1"}, {"1", "5", "1"}, {"3", "5", "2"}}));
    EXPECT_EQ(provider.asked, (Texts{"k", "a", "b"}));
}

TEST_F(PrSortedTable, TheKeyDescendingIsNotTheOrderOfTheKeys) {
    provider.batches = {{1, {{1, 1}, {2, 2}}}};
    EXPECT_EQ(ask({"k"}, {"k desc"}), ORU_OK);
    EXPECT_EQ(rows(), (Rows{{"2", "2"}, {"1", "1"}}));
}

TEST_F(PrSortedTable, SomeOfTheKeysOrOtherPlacesAreSorted) {
    provider.batches = {{1, {{2, 2}, {1, 1}}}};
    EXPECT_EQ(ask({"k"}, {"k"}, {"k", "l"}), ORU_OK);
    EXPECT_EQ(rows(), (Rows{{"1", "1"}, {"2", "2"}}));
    provider.next = 0;
    provider.batches = {{1, {{2, 4, 2}, {1, 3, 1}}}};
    oru_do_vtable_clear(result.get());
    EXPECT_EQ(ask({"k"}, {"l", "k"}, {"k", "l"}), ORU_OK);
    EXPECT_EQ(rows(), (Rows{{"1", "3", "1"}, {"2", "4", "2"}}));
}

TEST_F(PrSortedTable, AttributesOfTheWhereClauseAreReadBehindThoseOfTheOrder) {
    const Nvlist where = where_of({{"speed >", 5}, {" AND ", 1}});
    provider.where = where.get();
    provider.batches = {{1, {{1, 2, 3, 4}}}};
    EXPECT_EQ(ask({"k"}, {"mtu desc"}), ORU_OK);
    EXPECT_EQ(provider.asked, (Texts{"k", "mtu", "speed", ""}));
    EXPECT_EQ(provider.complaints, Texts{});
    EXPECT_EQ(rows(), (Rows{{"1", "2", "3", "4"}}));
}

TEST_F(PrSortedTable, OnlyTheLastBatchEndsTheWalk) {
    provider.batches = {{102, {{1}}}, {10000, {}}, {-1, {{2}}}, {1, {{3}}}};
    EXPECT_EQ(ask({"k"}, {}), ORU_OK);
    EXPECT_EQ(rows(), (Rows{{"1"}, {"2"}, {"3"}}));
    EXPECT_EQ(provider.complaints, Texts{});
}

TEST_F(PrSortedTable, ColumnsThatARowDoesNotHaveAreNotAdded) {
    provider.batches = {{1, {{4}}}};
    EXPECT_EQ(ask({"k", "_resultIndex", "_resultCount"}, {}), ORU_OK);
    EXPECT_EQ(rows(), (Rows{{"4"}}));
}

TEST_F(PrSortedTable, RowsThatCannotBeComparedAreLeftOutWithoutAFailure) {
    provider.table.get_next = [](ORUPrCrudxHandler *, ORUDoUri *, ORUDoNlist *, ORUDoNvlist *,
                                 ORUDoNlist *, int32_t, ORUDoVtable *table, ORUDoVlist *) {
        for (const char *word : {"", "x"}) {
            const Vlist row(oru_do_vlist_new());
            oru_do_vlist_add_int(row.get(), 1);
            *word != '\0' ? oru_do_vlist_add_string(row.get(), word)
                          : oru_do_vlist_add_int(row.get(), 2);
            oru_do_vtable_add(table, row.get());
        }
        return int32_t{1};
    };
    EXPECT_EQ(ask({"k"}, {"mtu"}), ORU_OK);
    EXPECT_EQ(rows(), (Rows{{"1", "2"}}));
}

TEST_F(PrSortedTable, ARowThatTheSorterHasNoMemoryForIsReported) {
    provider.table.get_next = [](ORUPrCrudxHandler *, ORUDoUri *, ORUDoNlist *, ORUDoNvlist *,
                                 ORUDoNlist *, int32_t, ORUDoVtable *table, ORUDoVlist *) {
        for (const int32_t n : {5, 4, 3}) {
            const Vlist row(oru_do_vlist_new());
            oru_do_vlist_add_int(row.get(), n);
            oru_do_vlist_add_int(row.get(), n);
            oru_do_vtable_add(table, row.get());
        }
        // The next thing that needs memory is the list of the first row's keys.
        poolheap_fail_nth(1, 0);
        return int32_t{1};
    };
    const int32_t code = ask({"k"}, {"mtu"});
    poolheap_fail_off();
    EXPECT_EQ(code, ORU_RC_MALLOC);
    EXPECT_EQ(rows(), (Rows{{"3", "3"}, {"4", "4"}}));
}

TEST_F(PrSortedTable, NullIsRefused) {
    const Nlist names = names_of({"k"});
    ORUDoVtable *r = result.get();
    const auto get = [this](ORUPrCrudxHandler *handler, ORUDoNlist *attrs, ORUDoVtable *table) {
        oru_pr_get_sorted_vtable(handler, uri.get(), attrs, nullptr, nullptr, 0, nullptr, table);
    };
    EXPECT_ASSERTION(get(nullptr, names.get(), r), "handler");
    EXPECT_ASSERTION(get(&provider.table, nullptr, r), "attrs");
    EXPECT_ASSERTION(get(&provider.table, names.get(), nullptr), "result");
}

// A row that the table itself finds no item for is not reported by it, and may take the rows in
// front of it along.
void sweep_walks(PrSortedTable &test, const std::vector<const char *> &order) {
    const Nlist names = names_of({"k", "_resultIndex"});
    const Nlist by = names_of(order);
    const Nvlist where = where_of({{"speed", 1}});
    const char *const keys[] = {"k"};
    test.provider.uri = test.uri.get();
    test.provider.where = where.get();
    test.provider.batches = {{1, {{1, 0, 8}, {2, 0, 7}}}};
    oru::test::sweep_oom(
        [&] {
            test.provider.next = 0;
            const int32_t code =
                oru_pr_get_sorted_vtable(&test.provider.table, test.uri.get(), names.get(),
                                         where.get(), by.get(), 1, keys, test.result.get());
            EXPECT_TRUE(code == ORU_OK || (code == ORU_RC_MALLOC && oom_hit())) << code;
            if (code == ORU_OK && !oom_hit()) {
                EXPECT_EQ(oru_do_vtable_get_row_num(test.result.get()), 2);
            }
            if (test.provider.next == 0) {
                EXPECT_EQ(code, ORU_RC_MALLOC);
                EXPECT_EQ(oru_do_vtable_get_row_num(test.result.get()), 0);
            }
            oru_do_vtable_clear(test.result.get());
        },
        {.promised_deaths = {}, .at_least = 12});
}

TEST_F(PrSortedTable, RunningOutOfMemoryIsReportedBeforeTheFirstCall) {
    sweep_walks(*this, {"k"});
}

TEST_F(PrSortedTable, RunningOutOfMemoryWhileSortingIsReported) {
    sweep_walks(*this, {"mtu desc"});
}

}  // namespace
