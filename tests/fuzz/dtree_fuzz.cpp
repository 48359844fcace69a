// Trees of any shape: found in by path and address, visited, hidden, written and read, flattened.
// Lines: the letters of the tree, a path, an address with a path behind "#", and two numbers in
// one character each: where a visit stops, which is also the child at hand, and the flags to
// flatten it with; from 8 on the children in front of it are released instead.
#include <oru/properties.h>
#include <oru/rows_properties.h>
#include <oruplatform/poolheap.h>

#include <algorithm>

#include "tests/fuzz/dtree_fuzz.h"

namespace {

using fuzz::children_of;
using fuzz::Tree;

// ---- Hiding ----

void check_hiding(const Tree &tree, size_t which) {
    ORUDoDtree *root = tree.root.get();
    const auto children = children_of(root);
    ORUDoDtree *after = which < children.size() ? children[which] : nullptr;
    std::vector<int32_t> before;
    for (ORUDoDtree *child : children)
        before.push_back(oru_do_dtree_is_hidden(child));
    oru_do_dtree_hide_children(root, after, 7);
    const size_t first = after != nullptr ? which + 1 : 0;
    for (size_t i = 0; i < children.size(); ++i) {
        CHECK(oru_do_dtree_is_hidden(children[i]) == (i < first ? before[i] : 7));
        oru_do_dtree_hide_node(children[i], before[i]);
    }
}

// ---- Rows ----

bool is_leaf_with_all(ORUDoDtree *node) {
    return oru_do_dtree_get_properties(node) != nullptr && oru_do_dtree_get_mr_uri(node) != nullptr;
}

// Every leaf is a row, and gets its address as a property.
void check_rows(const Tree &tree) {
    std::vector<ORUDoDtree *> leaves;
    std::copy_if(tree.nodes.begin(), tree.nodes.end(), std::back_inserter(leaves),
                 [](ORUDoDtree *node) { return oru_do_dtree_get_child_count(node) == 0; });
    ORUDoRowProperties *rows = oru_do_dtree_into_properties(tree.root.get());
    CHECK((rows != nullptr) == std::all_of(leaves.begin(), leaves.end(), is_leaf_with_all));
    if (rows == nullptr)
        return;
    CHECK(oru_do_rows_properties_count(rows) == static_cast<int32_t>(leaves.size()));
    ORUDoRowProperty *row = oru_do_rows_property_get_first(rows);
    for (ORUDoDtree *leaf : leaves) {
        const fuzz::Properties props(oru_do_rows_property_get_properties(row));
        CHECK(props.get() == oru_do_dtree_get_properties(leaf));
        CHECK(oru_do_properties_get_value(props.get(), "_uri") != nullptr);
        row = oru_do_rows_property_get_next(row);
    }
    CHECK(row == nullptr);
    oru_do_rows_properties_deref(rows);
}

// ---- Moving ----

// A node that has a sibling behind it is not taken, and the error of the would-be parent says so.
void check_adoption(const Tree &tree) {
    ORUDoDtree *root = tree.root.get();
    const auto children = children_of(root);
    if (children.size() < 2)
        return;
    const fuzz::Node other(oru_do_dtree_new_str("other"));
    CHECK(oru_do_dtree_adopt_child(other.get(), children.front()) == nullptr);
    CHECK(oru_do_error_get_code(oru_do_dtree_get_error(other.get())) == 10000);
    CHECK(children_of(other.get()).empty() && children_of(root) == children);
    oru_do_dtree_transfer_children(other.get(), root);
    CHECK(children_of(other.get()) == children && children_of(root).empty());
    oru_do_dtree_transfer_children(root, other.get());
    CHECK(children_of(other.get()).empty() && children_of(root) == children);
}

// Releases the children in front of one.
void check_removal(const Tree &tree, size_t which) {
    const auto children = children_of(tree.root.get());
    if (which >= children.size())
        return;
    oru_do_dtree_remove_visited_peers(children[which]);
    CHECK(children_of(tree.root.get()) ==
          std::vector<ORUDoDtree *>(children.begin() + static_cast<std::ptrdiff_t>(which),
                                    children.end()));
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    // Merged tables may hold a name twice, which an index does not take.
    oru_do_properties_set_max_size_before_hash_table(1000000);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const auto lines = fuzz::lines_of<4>(data, size);
    const uint64_t blocks = poolheap_live_blocks();
    {
        const Tree tree = fuzz::grow(lines[0]);
        const auto number = [&](size_t at) {
            return lines[3].size() > at ? static_cast<unsigned char>(lines[3][at]) % 32u : 0u;
        };
        fuzz::check_shape(tree);
        fuzz::check_visits(tree, number(0));
        fuzz::check_paths(tree, fuzz::until_zero(lines[1]));
        fuzz::check_addresses(tree, fuzz::until_zero(lines[2]));
        fuzz::check_forms(tree);
        check_hiding(tree, number(0));
        check_adoption(tree);
        check_rows(tree);
        if (number(1) < 8) {
            check_removal(tree, number(0));
        } else {
            fuzz::check_flattening(tree, number(0), number(1));
        }
    }
    CHECK(poolheap_live_blocks() == blocks);
    return 0;
}
