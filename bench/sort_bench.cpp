// The sorter of rows beside std::stable_sort over the same rows by the same keys, compared by the
// same comparison of values ("stable_sort"); and over numbers and texts that were taken out of the
// rows before the clock started ("plain keys"), which shows what values and a table cost. Each
// round ends with a table of all rows in order. Tracing is off, as it is by default, and all pools
// are sized.
#include <oru/value.h>
#include <oru/vlist.h>
#include <oru/vtable.h>
#include <oru/vtable_sorter.h>
#include <oruplatform/chunk.h>
#include <oruplatform/tracelet.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "bench/memory.h"
#include "bench/ratios.h"

namespace {

constexpr int32_t kRows = 100000;
constexpr int32_t kColumns = 6;  // in front of the keys
constexpr int32_t kAnyNumber = 1 << 24;
constexpr int kRepetitions = 7;

void size_pools() {
    const auto rows = static_cast<intptr_t>(kRows);
    init_chunk_poolheap_oru_do_value(10 * rows, CHUNK_FLAG_GROW);
    init_chunk_poolheap_oru_do_value_sml_misc(2 * rows, CHUNK_FLAG_GROW);
    init_chunk_poolheap_oru_do_vlist(4 * rows, CHUNK_FLAG_GROW);
    init_chunk_poolheap_oru_do_vlist_item(14 * rows, CHUNK_FLAG_GROW);
    init_chunk_poolheap_oru_do_vtable(2 * rows, CHUNK_FLAG_GROW);
    init_chunk_poolheap_oru_do_vtable_item(4 * rows, CHUNK_FLAG_GROW);
}

struct Row {
    ORUDoVlist *values;
    ORUDoValue *number_value;
    ORUDoValue *text_value;
    int32_t number;
    std::string text;
};

// Rows of six attributes and two keys, a number below `distinct` and a text. They live on.
const std::vector<Row> &rows_with(int32_t distinct) {
    static std::map<int32_t, std::vector<Row>> made;
    std::vector<Row> &rows = made[distinct];
    if (!rows.empty())
        return rows;
    uint32_t random = 12345;
    for (int32_t i = 0; i < kRows; ++i) {
        random = random * 1664525u + 1013904223u;
        const auto number = static_cast<int32_t>((random >> 8) % static_cast<uint32_t>(distinct));
        Row row{oru_do_vlist_new(), nullptr, nullptr, number, "port " + std::to_string(i % 977)};
        for (int32_t column = 0; column < kColumns; ++column)
            oru_do_vlist_add_int(row.values, i);
        oru_do_vlist_add_int(row.values, row.number);
        oru_do_vlist_add_string(row.values, row.text.c_str());
        row.number_value = oru_do_vlist_get_value(row.values, kColumns);
        row.text_value = oru_do_vlist_get_value(row.values, kColumns + 1);
        rows.push_back(std::move(row));
    }
    return rows;
}

ORUDoVtable *table_of(const std::vector<const Row *> &order) {
    ORUDoVtable *table = oru_do_vtable_new();
    for (const Row *row : order)
        oru_do_vtable_add(table, row->values);
    return table;
}

std::vector<const Row *> pointers_to(const std::vector<Row> &rows) {
    std::vector<const Row *> order;
    for (const Row &row : rows)
        order.push_back(&row);
    return order;
}

template <int32_t kDistinct, int32_t kKeys>
void sort_ours(benchmark::State &state) {
    const auto &rows = rows_with(kDistinct);
    for (auto _ : state) {
        ORUVtableSorter *sorter = oru_vtable_sorter_new(kColumns, kKeys, "aa", -1, -1);
        for (const Row &row : rows)
            oru_vtable_sorter_add(sorter, row.values);
        ORUDoVtable *table = oru_do_vtable_new();
        oru_vtable_sorter_delete(sorter, table);
        benchmark::DoNotOptimize(oru_do_vtable_get_row_num(table));
        oru_do_vtable_deref(table);
    }
}

template <int32_t kDistinct, class Less>
void sort_peer(benchmark::State &state, Less less) {
    const auto &rows = rows_with(kDistinct);
    for (auto _ : state) {
        auto order = pointers_to(rows);
        std::stable_sort(order.begin(), order.end(), less);
        ORUDoVtable *table = table_of(order);
        benchmark::DoNotOptimize(oru_do_vtable_get_row_num(table));
        oru_do_vtable_deref(table);
    }
}

template <int32_t kDistinct, int32_t kKeys>
void sort_values(benchmark::State &state) {
    sort_peer<kDistinct>(state, [](const Row *a, const Row *b) {
        const int32_t order = oru_do_value_compare(a->number_value, b->number_value);
        if (order != 0 || kKeys == 1)
            return order < 0;
        return oru_do_value_compare(a->text_value, b->text_value) < 0;
    });
}

template <int32_t kDistinct, int32_t kKeys>
void sort_plain_keys(benchmark::State &state) {
    sort_peer<kDistinct>(state, [](const Row *a, const Row *b) {
        if (a->number != b->number || kKeys == 1)
            return a->number < b->number;
        if (a->text.size() != b->text.size())
            return a->text.size() < b->text.size();
        return a->text < b->text;
    });
}

template <int32_t kDistinct, int32_t kKeys>
void add(const std::string &work) {
    oru::bench::compare(work + "/ours", sort_ours<kDistinct, kKeys>, kRepetitions);
    oru::bench::compare(work + "/stable_sort", sort_values<kDistinct, kKeys>, kRepetitions);
    oru::bench::compare(work + "/plain keys", sort_plain_keys<kDistinct, kKeys>, kRepetitions);
    oru::bench::expect(work, "stable_sort", oru::bench::at_most(3));
}

// What a row costs while it is in the sorter, and in a table; the row itself is there before.
void print_bytes() {
    const auto file_all = [] {
        ORUVtableSorter *sorter = oru_vtable_sorter_new(kColumns, 1, "a", -1, -1);
        for (const Row &row : rows_with(kAnyNumber))
            oru_vtable_sorter_add(sorter, row.values);
    };
    const auto add_all = [] { table_of(pointers_to(rows_with(kAnyNumber))); };
    const auto make_rows = [] { rows_with(kAnyNumber); };
    const auto make_pooled_rows = [] {
        size_pools();
        rows_with(kAnyNumber);
    };
    oru::bench::print_bytes_each("row in the sorter", "pools", kRows, make_pooled_rows, file_all);
    oru::bench::print_bytes_each("row in the sorter", "heap", kRows, make_rows, file_all);
    oru::bench::print_bytes_each("row in a table", "pools", kRows, make_pooled_rows, add_all);
    oru::bench::print_bytes_each("row in a table", "heap", kRows, make_rows, add_all);
}

}  // namespace

int main(int argc, char **argv) {
    tracelet_set_threshold(0);
    print_bytes();
    size_pools();
    add<kAnyNumber, 1>("100000 rows, a number");
    add<1000, 1>("100000 rows, 1000 numbers");
    add<1000, 2>("100000 rows, number, text");
    return oru::bench::run_all(argc, argv);
}
