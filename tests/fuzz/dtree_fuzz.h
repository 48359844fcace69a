// A tree that letters make, and a view of it by plain containers.
#ifndef ORU_TESTS_FUZZ_DTREE_FUZZ_H
#define ORU_TESTS_FUZZ_DTREE_FUZZ_H

#include <oru/dtree.h>
#include <oru/error.h>

#include <vector>

#include "tests/fuzz/fuzz.h"

namespace fuzz {

struct ReleaseTree : Release {
    using Release::operator();
    void operator()(ORUDoDtree *object) const { oru_do_dtree_deref(object); }
    void operator()(ORUDoError *object) const { oru_do_error_deref(object); }
    void operator()(ORUDoErrorList *object) const { oru_do_error_list_deref(object); }
};

using Node = std::unique_ptr<ORUDoDtree, ReleaseTree>;
using Error = std::unique_ptr<ORUDoError, ReleaseTree>;
using Errors = std::unique_ptr<ORUDoErrorList, ReleaseTree>;

struct Tree {
    Node root;
    std::vector<Node> held;  // references beside those of the parents
    std::vector<ORUDoDtree *> nodes;
    bool hides = false;
};

/*
 * Letters make the tree: a to h a child of that name, A to D one with a name of its own kind, both
 * to go on below it; "^" goes up. Of the node: p to t set a property, digits its address, "!" an
 * error, "-" hides it, "*" holds it, "v" takes the values of its properties.
 */
Tree grow(const std::string &letters);

inline const char *name_of(ORUDoDtree *node) {
    return oru_do_name_get_strname(oru_do_dtree_get_name(node));
}

// All children, hidden ones too.
std::vector<ORUDoDtree *> children_of(ORUDoDtree *node);

std::string json_of(ORUDoDtree *node);

// What must hold of a tree, whatever it is; the tree stays as it is.
void check_shape(const Tree &tree);
void check_visits(const Tree &tree, size_t stop);
void check_paths(const Tree &tree, const std::string &path);
void check_addresses(const Tree &tree, const std::string &query);
void check_forms(const Tree &tree);

// Flattens a child, all of them or a document; what is left is only to be walked down.
void check_flattening(const Tree &tree, size_t which, uint32_t how);

}  // namespace fuzz

#endif
