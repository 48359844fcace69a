#include <oru/properties.h>

#include "tests/fuzz/dtree_fuzz.h"

namespace fuzz {
namespace {

constexpr size_t kMostNodes = 64;
constexpr size_t kMostLevels = 24;

void add(Tree &tree, ORUDoDtree *&at, size_t &level, const char *words) {
    if (tree.nodes.size() == kMostNodes || level == kMostLevels)
        return;
    const Name name(oru_do_name_new(words));
    at = oru_do_dtree_add_child(at, name.get());
    ++level;
    tree.nodes.push_back(at);
}

void set_property(ORUDoDtree *node, char letter, size_t number) {
    const char name[] = {letter, '\0'};
    const Value value(oru_do_value_new_int(static_cast<int32_t>(number)));
    oru_do_dtree_set_value(node, name, value.get());
}

void set_address(ORUDoDtree *node, char digit) {
    const char text[] = {'/', digit, '\0'};
    const Uri uri(oru_do_uri_new(text));
    oru_do_dtree_set_mr_uri(node, uri.get());
}

void change(Tree &tree, ORUDoDtree *node, char letter, size_t number) {
    if (letter >= 'p' && letter <= 't') {
        set_property(node, letter, number);
    } else if (letter >= '0' && letter <= '9') {
        set_address(node, letter);
    } else if (letter == '!') {
        const Error error(oru_do_error_new(static_cast<int32_t>(number), "error"));
        oru_do_dtree_set_error(node, error.get());
    } else if (letter == '-') {
        oru_do_dtree_hide_node(node, 1);
        tree.hides = true;
    } else if (letter == '*') {
        tree.held.emplace_back(oru_do_dtree_ref(node));
    } else if (letter == 'v') {
        if (ORUDoProperties *props = oru_do_dtree_get_properties(node))
            oru_do_properties_reset_values(props);
    }
}

}  // namespace

Tree grow(const std::string &letters) {
    constexpr const char *kNames[] = {"", "a.b", "..", "x y"};
    Tree tree;
    tree.root.reset(oru_do_dtree_new_str("root"));
    tree.nodes.push_back(tree.root.get());
    ORUDoDtree *at = tree.root.get();
    size_t level = 0;
    for (size_t i = 0; i < letters.size(); ++i) {
        const char letter = letters[i];
        const char name[] = {letter, '\0'};
        if (letter >= 'a' && letter <= 'h') {
            add(tree, at, level, name);
        } else if (letter >= 'A' && letter <= 'D') {
            add(tree, at, level, kNames[letter - 'A']);
        } else if (letter == '^' && level > 0) {
            at = oru_do_dtree_get_parent(at);
            --level;
        } else {
            change(tree, at, letter, i);
        }
    }
    return tree;
}

std::vector<ORUDoDtree *> children_of(ORUDoDtree *node) {
    std::vector<ORUDoDtree *> children;
    while (ORUDoDtree *child = oru_do_dtree_get_child(node, static_cast<int32_t>(children.size())))
        children.push_back(child);
    return children;
}

}  // namespace fuzz
