// Sorting 100,000 rows of a table by a key of texts and by one of numbers, as they arrive, against
// std::stable_sort of the same rows by the same keys; and flattening a node of 1,000 children, as
// results of nested queries are flattened, against the same on a tree of standard containers. The
// memory of both is compared too. Tracing is off and all pools are sized.
#include <oru/oru.h>
#include <oruplatform/chunk.h>
#include <oruplatform/tracelet.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bench/memory.h"
#include "bench/ratios.h"

namespace {

constexpr int kRows = 100000;
constexpr int kRepetitions = 12;

void size_pools() {
    for (auto *init :
         {init_chunk_poolheap_oru_do_name, init_chunk_poolheap_oru_do_uri,
          init_chunk_poolheap_oru_do_uri_misc, init_chunk_poolheap_oru_do_uri_sml_misc,
          init_chunk_poolheap_oru_do_value, init_chunk_poolheap_oru_do_value_misc,
          init_chunk_poolheap_oru_do_value_sml_misc, init_chunk_poolheap_oru_do_property,
          init_chunk_poolheap_oru_do_properties, init_chunk_poolheap_oru_do_dtree,
          init_chunk_poolheap_oru_do_vlist, init_chunk_poolheap_oru_do_vlist_item,
          init_chunk_poolheap_oru_do_vtable, init_chunk_poolheap_oru_do_vtable_item,
          init_chunk_poolheap_oru_do_strbuf, init_chunk_poolheap_oru_do_strbuf_misc})
        init(1024, CHUNK_FLAG_GROW);
}

// ---- Sorting ----

// Numbers in an order without a pattern, each some three times.
int scrambled(int i) {
    return static_cast<int>(static_cast<uint32_t>(i) * 2654435761u % 33331);
}

std::string text_key(int i) {
    return "ge-" + std::to_string(scrambled(i)) + "/0/1";
}

// Rows of a text, a number and a serial number.
const std::vector<ORUDoVlist *> &rows() {
    static const std::vector<ORUDoVlist *> made = [] {
        std::vector<ORUDoVlist *> list;
        for (int i = 0; i < kRows; i++) {
            ORUDoVlist *row = oru_do_vlist_new();
            oru_do_vlist_add_string(row, text_key(i).c_str());
            oru_do_vlist_add_int(row, scrambled(i));
            oru_do_vlist_add_int(row, i);
            list.push_back(row);
        }
        return list;
    }();
    return made;
}

void sort_by_column(int32_t column) {
    ORUVtableSorter *sorter = oru_vtable_sorter_new(column, 1, "a", -1, -1);
    for (ORUDoVlist *row : rows())
        oru_vtable_sorter_add(sorter, row);
    ORUDoVtable *table = oru_do_vtable_new();
    oru_vtable_sorter_delete(sorter, table);
    if (oru_do_vtable_get_row_num(table) != kRows)
        std::abort();
    oru_do_vtable_deref(table);
}

void sort_texts() {
    sort_by_column(0);
}

void sort_numbers() {
    sort_by_column(1);
}

// The rows come to the peer's table with their references.
template <class Keyed>
void hand_over(const std::vector<Keyed> &keyed) {
    std::vector<ORUDoVlist *> table;
    for (const auto &entry : keyed)
        table.push_back(oru_do_vlist_ref(entry.second));
    benchmark::DoNotOptimize(table.data());
    for (ORUDoVlist *row : table)
        oru_do_vlist_deref(row);
}

// By bare numbers or texts, taken out of each row once: what no order of values can reach.
template <class Key>
void sort_with_keys(Key (*key_of)(ORUDoVlist *)) {
    std::vector<std::pair<Key, ORUDoVlist *>> keyed;
    for (ORUDoVlist *row : rows())
        keyed.emplace_back(key_of(row), row);
    std::stable_sort(keyed.begin(), keyed.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    hand_over(keyed);
}

// The order of our values, which is what the sorter goes by.
template <int32_t column>
void sort_by_values() {
    using Keyed = std::pair<ORUDoValue *, ORUDoVlist *>;
    std::vector<Keyed> keyed;
    for (ORUDoVlist *row : rows())
        keyed.emplace_back(oru_do_vlist_get_value(row, column), row);
    std::stable_sort(keyed.begin(), keyed.end(), [](const Keyed &a, const Keyed &b) {
        return oru_do_value_compare(a.first, b.first) < 0;
    });
    hand_over(keyed);
}

std::string_view text_of(ORUDoVlist *row) {
    int32_t status = 0;
    return oru_do_value_get_string(oru_do_vlist_get_value(row, 0), &status);
}

int32_t number_of(ORUDoVlist *row) {
    int32_t status = 0;
    return oru_do_value_get_int(oru_do_vlist_get_value(row, 1), &status);
}

void sort_texts_with_keys() {
    sort_with_keys(text_of);
}

void sort_numbers_with_keys() {
    sort_with_keys(number_of);
}

template <void (*work)()>
void run(benchmark::State &state) {
    for (auto _ : state)
        work();
}

void compare_sorting() {
    using oru::bench::at_most;
    oru::bench::compare("sort by a text/ours", run<sort_texts>, kRepetitions);
    oru::bench::compare("sort by a text/stable_sort", run<sort_by_values<0>>, kRepetitions);
    oru::bench::compare("sort by a text/stable_sort of bare keys", run<sort_texts_with_keys>,
                        kRepetitions);
    oru::bench::expect("sort by a text", "stable_sort", at_most(3));
    oru::bench::compare("sort by a number/ours", run<sort_numbers>, kRepetitions);
    oru::bench::compare("sort by a number/stable_sort", run<sort_by_values<1>>, kRepetitions);
    oru::bench::compare("sort by a number/stable_sort of bare keys", run<sort_numbers_with_keys>,
                        kRepetitions);
    oru::bench::expect("sort by a number", "stable_sort", at_most(3));
    const std::string memory = "memory to sort by a text";
    oru::bench::measure_bytes(memory, "ours", oru::bench::peak_bytes_of(sort_texts));
    oru::bench::measure_bytes(memory, "stable_sort", oru::bench::peak_bytes_of(sort_by_values<0>));
}

// ---- Flattening ----

constexpr int kChildren = 1000;
constexpr uint32_t kAll = 7;  // names of nodes and attributes, URIs
constexpr const char *kAttributes[] = {"name", "adminState", "mtu", "enabled"};

ORUDoDtree *make_tree() {
    ORUDoDtree *root = oru_do_dtree_new_str("");
    ORUDoDtree *slot = oru_do_dtree_new_str("slots");
    oru_do_dtree_adopt_child(root, slot);
    ORUDoUri *uri = oru_do_uri_new("/network/chassis;id=1/slots;number=1");
    oru_do_dtree_set_mr_uri(slot, uri);
    oru_do_uri_deref(uri);
    const auto add_attributes = [](ORUDoDtree *node) {
        ORUDoProperties *props = oru_do_properties_new();
        for (const char *name : kAttributes)
            oru_do_properties_set_string(props, name, "a value");
        oru_do_dtree_set_properties(node, props);
        oru_do_properties_deref(props);
    };
    add_attributes(slot);
    for (int i = 0; i < kChildren; i++) {
        ORUDoDtree *port = oru_do_dtree_new_str("ports");
        add_attributes(port);
        oru_do_dtree_adopt_child(slot, port);
        oru_do_dtree_deref(port);
    }
    oru_do_dtree_deref(slot);
    return root;
}

void flatten(benchmark::State &state) {
    for (auto _ : state) {
        state.PauseTiming();
        ORUDoDtree *root = make_tree();
        state.ResumeTiming();
        oru_do_dtree_flatten(root, oru_do_dtree_get_child(root, 0), kAll);
        state.PauseTiming();
        if (oru_do_dtree_get_child_count(root) != kChildren)
            state.SkipWithError("not flattened");
        oru_do_dtree_deref(root);
        state.ResumeTiming();
    }
}

// Values are shared there as they are here.
struct PeerNode {
    std::string name;
    std::shared_ptr<std::string> uri;
    std::vector<std::pair<std::string, std::shared_ptr<std::string>>> attributes;
    std::vector<std::unique_ptr<PeerNode>> children;
};

std::unique_ptr<PeerNode> make_peer_node(const char *name) {
    auto node = std::make_unique<PeerNode>();
    node->name = name;
    for (const char *attribute : kAttributes)
        node->attributes.emplace_back(attribute, std::make_shared<std::string>("a value"));
    return node;
}

void take_over(const PeerNode &child, PeerNode &moved) {
    const std::string prefix = moved.name + '.';
    for (auto &attribute : moved.attributes)
        attribute.first = prefix + attribute.first;
    moved.attributes.insert(moved.attributes.end(), child.attributes.begin(),
                            child.attributes.end());
    moved.attributes.emplace_back(child.name + ".__uri", child.uri);
    moved.name = child.name + '.' + moved.name;
}

void flatten_peer(PeerNode &root) {
    std::vector<std::unique_ptr<PeerNode>> flat;
    for (auto &child : root.children) {
        for (auto &moved : child->children) {
            take_over(*child, *moved);
            flat.push_back(std::move(moved));
        }
    }
    root.children = std::move(flat);
}

void flatten_with_containers(benchmark::State &state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto root = make_peer_node("");
        auto slot = make_peer_node("slots");
        slot->uri = std::make_shared<std::string>("/network/chassis;id=1/slots;number=1");
        for (int i = 0; i < kChildren; i++)
            slot->children.push_back(make_peer_node("ports"));
        root->children.push_back(std::move(slot));
        state.ResumeTiming();
        flatten_peer(*root);
        state.PauseTiming();
        root.reset();
        state.ResumeTiming();
    }
}

void compare_flattening() {
    oru::bench::compare("flatten/ours", flatten, kRepetitions);
    oru::bench::compare("flatten/containers", flatten_with_containers, kRepetitions);
    oru::bench::expect("flatten", "containers", oru::bench::at_most(4));
}

}  // namespace

int main(int argc, char **argv) {
    tracelet_set_threshold(0);
    size_pools();
    rows();
    compare_sorting();
    compare_flattening();
    return oru::bench::run_all(argc, argv);
}
