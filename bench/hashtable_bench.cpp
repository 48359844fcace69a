// Search in a hash table keyed by texts, and filling one that grows, beside the tables of GLib and
// of the standard library; and the memory that an entry takes. Tracing is off, as it is by
// default, and chained elements come from a sized pool.
#include <oru/hashtable.h>
#include <oruplatform/chunk.h>
#include <oruplatform/tracelet.h>

#include <cstring>
#include <string_view>
#include <unordered_map>

#include "bench/memory.h"
#include "bench/names.h"
#include "bench/ratios.h"

#ifdef ORU_BENCH_GLIB
#include <glib.h>
#endif

namespace {

using oru::bench::Questions;

constexpr size_t kCount = 200;
constexpr uint32_t kBuckets = 64;
constexpr uint32_t kMaxBuckets = 1024;

constexpr uint32_t kElementTag = 0x2f00001;
void *g_elements = nullptr;

void size_pools() {
    init_chunk_poolheap_oru_hashtable(1024, CHUNK_FLAG_GROW);
    g_elements = chunk_create_poolheap(3 * sizeof(void *), 1024, CHUNK_FLAG_GROW, 1, kElementTag);
}

void *alloc_element() {
    void *element = chunk_malloc(g_elements);
    return element != nullptr ? memset(element, 0, 3 * sizeof(void *)) : nullptr;
}

void free_element(void *element) {
    chunk_free(g_elements, element);
}

// All contenders store the same pointers to names and copy none.
std::vector<std::string> &names() {
    static std::vector<std::string> all = oru::bench::attribute_names(kCount);
    return all;
}

struct Ours {
    ORUHashtable *table = oru_hashtable_dynamic_create(ORU_HASHTABLE_KEY_TEXT, kBuckets,
                                                       kMaxBuckets, alloc_element, free_element);
    ~Ours() { oru_hashtable_close(table, nullptr, nullptr); }
    void insert(const char *key, void *value) const { oru_hashtable_insert(table, key, value); }
    void *search(const char *key) const {
        void *value = nullptr;
        oru_hashtable_search(table, key, &value);
        return value;
    }
};

#ifdef ORU_BENCH_GLIB
struct Glib {
    GHashTable *table = g_hash_table_new(g_str_hash, g_str_equal);
    ~Glib() { g_hash_table_destroy(table); }
    void insert(char *key, void *value) const { g_hash_table_insert(table, key, value); }
    void *search(const char *key) const { return g_hash_table_lookup(table, key); }
};
#endif

struct Unordered {
    std::unordered_map<std::string_view, void *> table;
    void insert(const char *key, void *value) { table.emplace(key, value); }
    void *search(const char *key) const { return table.find(key)->second; }
};

template <class Table>
void fill(Table &table) {
    for (std::string &name : names())
        table.insert(name.data(), &name);
}

template <class Table>
void search(benchmark::State &state) {
    Table table;
    fill(table);
    Questions questions(names());
    for (auto _ : state)
        benchmark::DoNotOptimize(table.search(questions.next()));
}

template <class Table>
void make_and_fill(benchmark::State &state) {
    for (auto _ : state) {
        Table table;
        fill(table);
    }
}

template <class Table>
void add(const std::string &peer) {
    oru::bench::compare("search in 200 entries/" + peer, search<Table>);
    oru::bench::compare("make, insert 200, close/" + peer, make_and_fill<Table>);
}

// Of one table of many entries, the keys apart.
void print_memory() {
    constexpr size_t kKeySize = 8;
    constexpr size_t kKeys = 300000;
    std::vector<char> keys(kKeys * kKeySize);
    for (size_t i = 0; i < kKeys; ++i)
        std::snprintf(&keys[i * kKeySize], kKeySize, "%zu", i);
    ORUHashtable *table = nullptr;
    size_t next = 0;
    const auto prepare = [&table] {
        size_pools();
        table = oru_hashtable_dynamic_create(ORU_HASHTABLE_KEY_TEXT, kBuckets, 1U << 20,
                                             alloc_element, free_element);
    };
    oru::bench::print_bytes_of("hash table entry", "pools", prepare, [&](int) {
        oru_hashtable_insert(table, &keys[next++ * kKeySize], &keys);
    });
}

}  // namespace

int main(int argc, char **argv) {
    tracelet_set_threshold(0);
    print_memory();
    size_pools();
    add<Ours>("ours");
    add<Unordered>("unordered_map");
#ifdef ORU_BENCH_GLIB
    add<Glib>("GHashTable");
#endif
    return oru::bench::run_all(argc, argv);
}
