// Looking an entry of a property table up by its name, below and above the size from which a table
// has an index, beside the tables of GLib and of the standard library; and the memory that an
// entry takes. Tracing is off, as it is by default, and all pools are sized.
#include <oru/hashtable.h>
#include <oru/name.h>
#include <oru/properties.h>
#include <oru/value.h>
#include <oruplatform/chunk.h>
#include <oruplatform/tracelet.h>

#include <unordered_map>

#include "bench/memory.h"
#include "bench/names.h"
#include "bench/ratios.h"

#ifdef ORU_BENCH_GLIB
#include <glib.h>
#endif

namespace {

using oru::bench::attribute_names;
using oru::bench::Questions;

ORUDoProperties *table_of(size_t count) {
    ORUDoProperties *table = oru_do_properties_new();
    for (const std::string &name : attribute_names(count))
        oru_do_properties_set_int(table, name.c_str(), 1);
    return table;
}

template <size_t count>
void look_up(benchmark::State &state) {
    ORUDoProperties *table = table_of(count);
    Questions questions(attribute_names(count));
    for (auto _ : state)
        benchmark::DoNotOptimize(oru_do_properties_get_value(table, questions.next()));
    oru_do_properties_deref(table);
}

#ifdef ORU_BENCH_GLIB
template <size_t count>
void look_up_glib(benchmark::State &state) {
    std::vector<std::string> names = attribute_names(count);
    GHashTable *table = g_hash_table_new(g_str_hash, g_str_equal);
    for (std::string &name : names)
        g_hash_table_insert(table, name.data(), &name);
    Questions questions(names);
    for (auto _ : state)
        benchmark::DoNotOptimize(g_hash_table_lookup(table, questions.next()));
    g_hash_table_destroy(table);
}
#endif

template <size_t count>
void look_up_unordered(benchmark::State &state) {
    std::vector<std::string> names = attribute_names(count);
    std::unordered_map<std::string, void *> table;
    for (std::string &name : names)
        table[name] = &name;
    Questions questions(names);
    for (auto _ : state)
        benchmark::DoNotOptimize(table.find(questions.next())->second);
}

template <size_t count>
void compare_tables() {
    const std::string work = "look up, " + std::to_string(count) + " entries";
    oru::bench::compare(work + "/ours", look_up<count>);
    oru::bench::compare(work + "/unordered_map", look_up_unordered<count>);
    oru::bench::expect(work, "unordered_map", oru::bench::at_least(1));
#ifdef ORU_BENCH_GLIB
    oru::bench::compare(work + "/GHashTable", look_up_glib<count>);
    oru::bench::expect(work, "GHashTable", oru::bench::at_most(2));
#endif
}

void size_pools() {
    for (auto *init :
         {init_chunk_poolheap_oru_do_properties, init_chunk_poolheap_oru_do_property,
          init_chunk_poolheap_oru_do_properties_hashtable_elem, init_chunk_poolheap_oru_hashtable,
          init_chunk_poolheap_oru_do_name, init_chunk_poolheap_oru_do_value}) {
        init(1024, CHUNK_FLAG_GROW);
    }
}

// Of tables with `count` entries each, an entry with its name, its number and its part of the
// table.
void print_memory(const char *what, size_t count) {
    const auto make = [table = static_cast<ORUDoProperties *>(nullptr),
                       names = attribute_names(count)](int i) mutable {
        const size_t place = static_cast<size_t>(i) % names.size();
        if (place == 0)
            table = oru_do_properties_new();
        oru_do_properties_set_long(table, names[place].c_str(), 1);
    };
    oru::bench::print_bytes_of(what, "pools", size_pools, make);
    oru::bench::print_bytes_of(
        what, "heap", [] {}, make);
}

}  // namespace

int main(int argc, char **argv) {
    tracelet_set_threshold(0);
    print_memory("entry of 20, with its number", 20);
    print_memory("entry of 200, with its number", 200);
    size_pools();
    compare_tables<5>();
    compare_tables<20>();
    compare_tables<21>();
    compare_tables<200>();
    return oru::bench::run_all(argc, argv);
}
