#include <oru/properties.h>

#include <algorithm>

#include "tests/fuzz/dtree_fuzz.h"

namespace fuzz {
namespace {

using Names = std::vector<std::string>;

Names names_of(const std::vector<ORUDoDtree *> &nodes) {
    Names names;
    for (ORUDoDtree *node : nodes)
        names.emplace_back(name_of(node));
    return names;
}

// A node and what would become of its name. Those that somebody holds stay where they are.
struct Piece {
    ORUDoDtree *node;
    std::string name;
};

bool is_held(const Tree &tree, ORUDoDtree *node) {
    return std::any_of(tree.held.begin(), tree.held.end(),
                       [node](const Node &held) { return held.get() == node; });
}

// The names that take the place of a child: a node with children is replaced by them, at the end.
Names flattened(const Tree &tree, ORUDoDtree *child, bool joins) {
    std::vector<Piece> pieces{{child, name_of(child)}};
    for (size_t i = 0; i < pieces.size();) {
        const Piece piece = pieces[i];
        const auto children = children_of(piece.node);
        if (children.empty() || is_held(tree, piece.node)) {
            ++i;
            continue;
        }
        pieces.erase(pieces.begin() + static_cast<std::ptrdiff_t>(i));
        for (ORUDoDtree *inner : children)
            pieces.push_back({inner, (joins ? piece.name + "." : "") + name_of(inner)});
    }
    Names names;
    for (const Piece &piece : pieces)
        names.push_back(piece.name);
    return names;
}

bool lacks_value(ORUDoDtree *node) {
    ORUDoProperties *props = oru_do_dtree_get_properties(node);
    if (props == nullptr)
        return false;
    ORUDoIter iter;
    oru_do_properties_iter(props, &iter);
    while (ORUDoProperty *entry = oru_do_properties_get_next(&iter)) {
        if (oru_do_property_get_value(entry) == nullptr)
            return true;
    }
    return false;
}

// Properties that are handed down must have values: the others are asserted.
bool may_flatten(const Tree &tree) {
    return std::none_of(tree.nodes.begin(), tree.nodes.end(), [](ORUDoDtree *node) {
        return oru_do_dtree_get_child_count(node) > 0 && lacks_value(node);
    });
}

bool goes(const Tree &tree, ORUDoDtree *node) {
    return oru_do_dtree_get_child_count(node) > 0 && !is_held(tree, node);
}

// The names below `parent` when the child at `which` is flattened.
Names expected_names(const Tree &tree, ORUDoDtree *parent, size_t which, bool joins) {
    Names names;
    const auto children = children_of(parent);
    for (size_t i = 0; i < children.size(); ++i) {
        const Names pieces =
            i == which ? flattened(tree, children[i], joins) : Names{name_of(children[i])};
        names.insert(names.end(), pieces.begin(), pieces.end());
    }
    return names;
}

void flatten_one(const Tree &tree, size_t which, uint32_t flags) {
    ORUDoDtree *root = tree.root.get();
    const auto children = children_of(root);
    if (which >= children.size()) {
        CHECK(oru_do_dtree_flatten(root, root, flags) == nullptr);
        return;
    }
    const Names names = expected_names(tree, root, which, (flags & 1u) != 0);
    oru_do_dtree_flatten(root, children[which], flags);
    CHECK(names_of(children_of(root)) == names);
}

// All children in one call. With two that go, nodes get lost, so there is one at most.
template <class Flatten>
void flatten_all(const Tree &tree, ORUDoDtree *parent, uint32_t flags, Flatten flatten) {
    const auto children = children_of(parent);
    const auto is_going = [&tree](ORUDoDtree *node) { return goes(tree, node); };
    if (std::count_if(children.begin(), children.end(), is_going) > 1)
        return;
    const auto first = std::find_if(children.begin(), children.end(), is_going);
    const auto which = static_cast<size_t>(first - children.begin());
    const Names names = expected_names(tree, parent, which, (flags & 1u) != 0);
    flatten();
    CHECK(names_of(children_of(parent)) == names);
}

}  // namespace

// Parents of moved nodes may be gone, so nothing looks up from here on.
void check_flattening(const Tree &tree, size_t which, uint32_t how) {
    if (!may_flatten(tree))
        return;
    ORUDoDtree *root = tree.root.get();
    ORUDoDtree *first = oru_do_dtree_get_child(root, 0);
    const uint32_t flags = how & 7u;
    if (how < 16) {
        flatten_one(tree, which, flags);
    } else if (how < 24) {
        flatten_all(tree, root, flags, [=] { oru_do_dtree_flatten(root, nullptr, flags); });
    } else if (first == nullptr) {
        CHECK(oru_do_dtree_flatten_doc(root, flags) == nullptr);
    } else {
        flatten_all(tree, first, flags,
                    [=] { CHECK(oru_do_dtree_flatten_doc(root, flags) == first); });
    }
    CHECK(json_of(root).find("\"name\":\"root\"") != std::string::npos);
}

}  // namespace fuzz
