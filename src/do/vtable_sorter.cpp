// The sorter of rows, on the platform's balanced tree: a node for each key, with its rows.
#include "oru/vtable_sorter.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>

#include "do/value.h"
#include "do/vlist.h"
#include "do/vtable.h"
#include "frame/object.h"
#include "frame/tags.h"
#include "oru/rc.h"
#include "oru/value.h"
#include "oru/vlist.h"
#include "oruplatform/balanced_tree.h"
#include "oruplatform/poolheap.h"

struct ORUVtableSorter {
    void *tree;
    int32_t key_start;
    int32_t key_count;
    char *directions;
    int32_t index_column;
    uint32_t next_index;
    int32_t count_column;
    uint32_t row_total;
    bool is_filing;  // the tree is asked by us, so that all nodes it compares are ours
};

namespace {

using oru::Ref;

constexpr int32_t kTreeNotFound = 2;
constexpr int32_t kTreeNoMemory = 12;
constexpr int32_t kComparisonFailed = -1;
constexpr int32_t kNotComparable = -2;  // of two values

// Numbers that order first keys as their values are ordered, so that most comparisons need not
// look at these. Only those of one kind tell: whole numbers exactly, strings where they differ.
enum class RankKind : int32_t { none, number, text };

struct Rank {
    RankKind kind = RankKind::none;
    uint32_t length = 0;  // of a string: shorter ones come first
    uint64_t head = 0;    // the number, or the first bytes of the string
    uint64_t tail = 0;    // the bytes behind these
};

struct SortNode {
    ORUVtableSorter *sorter;
    ORUDoVlist *keys;
    ORUDoVtable *rows;
    Rank rank;  // of the first key; of our own nodes only
};

// ---- Ranks ----

// An unsigned number with its top bit set has no place among the signed ones.
Rank rank_of_number(const ORUDoValue &value) {
    const int64_t number = oru::integer_of(value);
    if (value.type == ORU_DO_TYPE_UNSIGNED_LONG && number < 0)
        return {};
    return {RankKind::number, 0, static_cast<uint64_t>(number) ^ uint64_t{1} << 63};
}

// Up to eight bytes from a place on, the first of them highest.
uint64_t bytes_at(std::string_view text, size_t place) {
    uint64_t bytes = 0;
    const size_t count = text.size() > place ? std::min(text.size() - place, sizeof bytes) : 0;
    std::memcpy(&bytes, text.data() + (count > 0 ? place : 0), count);
    return std::endian::native == std::endian::little ? __builtin_bswap64(bytes) : bytes;
}

Rank rank_of_text(const ORUDoValue &value) {
    const std::string_view text = oru::sized_payload(value);
    return {RankKind::text, static_cast<uint32_t>(text.size()), bytes_at(text, 0),
            bytes_at(text, sizeof(uint64_t))};
}

Rank rank_of(const ORUDoValue &value) {
    if (oru::is_integer_type(value.type))
        return rank_of_number(value);
    return value.type == ORU_DO_TYPE_STRING ? rank_of_text(value) : Rank{};
}

Rank rank_of(const ORUVtableSorter &sorter, const ORUDoValue *first_key) {
    if (first_key == nullptr || sorter.directions[0] == 's')
        return {};
    const Rank rank = rank_of(*first_key);
    if (sorter.directions[0] != 'd')
        return rank;
    return {rank.kind, ~rank.length, ~rank.head, ~rank.tail};
}

// Equal for ranks that do not tell.
int32_t compare_ranks(const Rank &a, const Rank &b) {
    if (a.kind != b.kind || a.kind == RankKind::none)
        return BALANCED_TREE_EQUAL;
    const auto order = [](auto x, auto y) {
        return x < y ? BALANCED_TREE_LESS : BALANCED_TREE_GREATER;
    };
    if (a.length != b.length)
        return order(a.length, b.length);
    if (a.head != b.head)
        return order(a.head, b.head);
    return a.tail != b.tail ? order(a.tail, b.tail) : BALANCED_TREE_EQUAL;
}

// ---- Comparing ----

int32_t opposite(int32_t order) {
    if (order == BALANCED_TREE_EQUAL)
        return order;
    return order == BALANCED_TREE_LESS ? BALANCED_TREE_GREATER : BALANCED_TREE_LESS;
}

bool are_uris(ORUDoValue *a, ORUDoValue *b) {
    return oru_do_is_uri_type(a->type) != 0 && oru_do_is_uri_type(b->type) != 0;
}

// Values that cannot be compared are a failure of the tree. The order of URIs is any number whose
// sign counts, the one of that failure too.
int32_t compare_values(ORUDoValue *a, ORUDoValue *b) {
    const int32_t order = oru::order_values(*a, *b, true);
    if (order == 0)
        return BALANCED_TREE_EQUAL;
    if (order == kNotComparable && !are_uris(a, b))
        return kComparisonFailed;
    return order < 0 ? BALANCED_TREE_LESS : BALANCED_TREE_GREATER;
}

// False for what is no string. A string whose storage could not be had reads as empty.
bool read_length(ORUDoValue *value, size_t &out) {
    int32_t code = ORU_OK;
    const char *text = oru_do_value_get_string(value, &code);
    out = text != nullptr ? std::strlen(text) : 0;
    return code == ORU_OK;
}

// Shorter texts come first; only those of one length go by their characters.
int32_t compare_by_length(ORUDoValue *a, ORUDoValue *b) {
    size_t length_a = 0;
    size_t length_b = 0;
    if (!read_length(a, length_a) || !read_length(b, length_b))
        return kComparisonFailed;
    if (length_a != length_b)
        return length_a < length_b ? BALANCED_TREE_LESS : BALANCED_TREE_GREATER;
    return compare_values(a, b);
}

int32_t compare_key(ORUDoValue *a, ORUDoValue *b, char direction) {
    if (a == nullptr || b == nullptr)
        return BALANCED_TREE_LESS;
    if (direction == 's')
        return compare_by_length(a, b);
    const int32_t order = compare_values(a, b);
    return direction == 'd' && order != kComparisonFailed ? opposite(order) : order;
}

ORUDoValue *value_of(const ORUDoVlistItem *item) {
    return item != nullptr ? item->value : nullptr;
}

int32_t compare_keys(const ORUVtableSorter &sorter, const ORUDoVlist &keys_a,
                     const ORUDoVlist &keys_b) {
    const ORUDoVlistItem *a = keys_a.first;
    const ORUDoVlistItem *b = keys_b.first;
    for (int32_t i = 0; i < sorter.key_count; ++i) {
        // A list that has ended ends the comparison.
        const int32_t order = compare_key(value_of(a), value_of(b), sorter.directions[i]);
        if (order != BALANCED_TREE_EQUAL)
            return order;
        a = a->next;
        b = b->next;
    }
    return BALANCED_TREE_EQUAL;
}

// Whoever asks for a comparison beside our own calls of the tree has nodes of three words.
int32_t compare_nodes(const void *first, const void *second) {
    const auto &a = *static_cast<const SortNode *>(first);
    const auto &b = *static_cast<const SortNode *>(second);
    if (a.sorter != nullptr && a.sorter->is_filing) [[likely]] {
        const int32_t told = compare_ranks(a.rank, b.rank);
        if (told != BALANCED_TREE_EQUAL) [[likely]]
            return told;
    }
    if (a.sorter == nullptr || b.sorter == nullptr)
        return BALANCED_TREE_EQUAL;
    if (a.keys == nullptr || b.keys == nullptr) {
        if (a.keys == b.keys)
            return BALANCED_TREE_EQUAL;
        return a.keys == nullptr ? BALANCED_TREE_LESS : BALANCED_TREE_GREATER;
    }
    return compare_keys(*a.sorter, *a.keys, *b.keys);
}

// ---- Filing ----

// A column that the row does not have is skipped, so that a later key moves up.
Ref<ORUDoVlist> keys_of(const ORUVtableSorter &sorter, ORUDoVlist *row) {
    auto keys = Ref<ORUDoVlist>::adopt(oru_do_vlist_new());
    for (int32_t i = 0; keys && i < sorter.key_count; ++i) {
        ORUDoValue *value = oru_do_vlist_get_value(row, sorter.key_start + i);
        if (value != nullptr && oru_do_vlist_add(keys.get(), value) < 0)
            return {};
    }
    return keys;
}

int32_t code_of(int32_t tree_result) {
    return tree_result == kTreeNoMemory ? ORU_RC_MALLOC : ORU_RC_GENERAL;
}

int32_t file_under_new_key(ORUVtableSorter &sorter, const SortNode &wanted, Ref<ORUDoVlist> keys,
                           ORUDoVlist *row) {
    auto rows = Ref<ORUDoVtable>::adopt(oru_do_vtable_new());
    if (!rows)
        return ORU_RC_MALLOC;
    oru_do_vtable_add(rows.get(), row);
    void *object = nullptr;
    int32_t result = balanced_tree_allocate_object(sorter.tree, &object, sizeof(SortNode));
    if (result != 0)
        return code_of(result);
    auto *node = static_cast<SortNode *>(object);
    *node = wanted;
    node->rows = rows.get();
    result = balanced_tree_insert(sorter.tree, node, 0);
    if (result != 0) {
        balanced_tree_free_object(sorter.tree, node);
        return code_of(result);
    }
    // The node holds them now.
    (void)keys.release();
    (void)rows.release();
    return ORU_OK;
}

int32_t file_among_nodes(ORUVtableSorter &sorter, ORUDoVlist *row) {
    auto keys = keys_of(sorter, row);
    if (!keys)
        return ORU_RC_MALLOC;
    const SortNode wanted{&sorter, keys.get(), nullptr, rank_of(sorter, value_of(keys->first))};
    void *found = nullptr;
    switch (balanced_tree_search(sorter.tree, BALANCED_TREE_SEARCH_EXACT, &wanted, &found, 0)) {
        case 0:
            // Rows of one key stay in the order of their arrival.
            oru_do_vtable_add(static_cast<SortNode *>(found)->rows, row);
            return ORU_OK;
        case kTreeNotFound:
            return file_under_new_key(sorter, wanted, std::move(keys), row);
        default:
            return ORU_RC_GENERAL;
    }
}

int32_t file_row(ORUVtableSorter &sorter, ORUDoVlist *row) {
    sorter.is_filing = true;
    const int32_t code = file_among_nodes(sorter, row);
    sorter.is_filing = false;
    return code;
}

// ---- Handing over ----

// Nothing where there is no such column.
void set_column(ORUDoVlist *row, int32_t column, uint32_t number) {
    if (column < 0)
        return;
    const auto value = Ref<ORUDoValue>::adopt(oru_do_value_new_unsigned_int(number));
    if (value)
        oru_do_vlist_set_value(row, column, value.get());
}

void hand_over(ORUVtableSorter &sorter, ORUDoVtable *rows, ORUDoVtable *vtable) {
    for (const ORUDoVtableItem *item = rows->first; item != nullptr; item = item->next) {
        set_column(item->row, sorter.index_column, sorter.next_index);
        if (sorter.index_column >= 0)
            ++sorter.next_index;
        set_column(item->row, sorter.count_column, sorter.row_total);
        oru_do_vtable_add(vtable, item->row);
    }
}

int32_t empty_node(void *object, void *vtable) {
    auto *node = static_cast<SortNode *>(object);
    if (vtable != nullptr && node->rows != nullptr)
        hand_over(*node->sorter, node->rows, static_cast<ORUDoVtable *>(vtable));
    oru_do_vtable_deref(std::exchange(node->rows, nullptr));
    oru_do_vlist_deref(std::exchange(node->keys, nullptr));
    return 1;
}

void free_sorter(ORUVtableSorter *sorter) {
    if (sorter->tree != nullptr)
        balanced_tree_shutdown(sorter->tree, 0);
    if (sorter->directions != nullptr)
        ph_free_named(sorter->directions);
    ph_free_named(sorter);
}

char *copy_directions(const char *directions, int32_t count) {
    const size_t room = count > 0 ? static_cast<size_t>(count) : 0;
    auto *copy =
        static_cast<char *>(ph_calloc_named(oru::tag_word(oru::Tag::vtable_sorter), room + 1, 1));
    if (copy != nullptr && directions != nullptr)
        std::memcpy(copy, directions, strnlen(directions, room));
    return copy;
}

}  // namespace

ORUVtableSorter *oru_vtable_sorter_new(int32_t key_start, int32_t key_count, const char *directions,
                                       int32_t index_column, int32_t count_column) {
    auto *sorter = static_cast<ORUVtableSorter *>(
        ph_calloc_named(oru::tag_word(oru::Tag::vtable_sorter), 1, sizeof(ORUVtableSorter)));
    if (sorter == nullptr)
        return nullptr;
    sorter->key_start = key_start;
    sorter->key_count = key_count;
    sorter->directions = copy_directions(directions, key_count);
    sorter->index_column = index_column;
    sorter->next_index = 1;
    sorter->count_column = count_column;
    if (sorter->directions == nullptr || balanced_tree_init(compare_nodes, 0, &sorter->tree) != 0) {
        free_sorter(sorter);
        return nullptr;
    }
    return sorter;
}

int32_t oru_vtable_sorter_add(ORUVtableSorter *sorter, ORUDoVlist *row) {
    ORU_REQUIRE(sorter);
    if (sorter->tree == nullptr)
        return ORU_RC_GENERAL;
    const int32_t code = file_row(*sorter, row);
    ++sorter->row_total;  // a row that could not be filed counts too
    return code;
}

void oru_vtable_sorter_delete(ORUVtableSorter *sorter, ORUDoVtable *vtable) {
    if (sorter == nullptr)
        return;
    int32_t status = 0;  // every layer may write it; the walk runs to its end
    if (sorter->tree != nullptr)
        balanced_tree_walk(sorter->tree, empty_node, vtable, &status);
    free_sorter(sorter);
}
