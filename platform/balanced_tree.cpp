#include "oruplatform/balanced_tree.h"

#include <utility>

#include "oruplatform/poolheap.h"
#include "platform/balanced_node.h"
#include "platform/codes.h"

using namespace oru::platform;

namespace {

using CompareFn = int32_t (*)(const void *, const void *);

// Where a key stands in the tree: the equal node, or the empty link where it would be put.
struct Position {
    int32_t result;  // 0 found, else a code
    TreeNode *parent;
    TreeNode **link;
};

struct Tree {
    CompareFn compare;
    TreeNode *root;
    TreeNode *loose;  // allocated and not inserted, chained by `parent` and `left`
    // Where the last search ended, when it found nothing and nothing changed since.
    Position missed;
};

// Stands in front of every object.
struct alignas(16) Holder {
    TreeNode node;
    Tree *tree;
    bool inserted;
};

void *object_of(TreeNode *node) {
    return reinterpret_cast<Holder *>(node) + 1;
}

Holder *holder_of(void *object) {
    return static_cast<Holder *>(object) - 1;
}

void add_loose(Tree &tree, TreeNode &node) {
    node = {.left = tree.loose};
    if (tree.loose != nullptr) {
        tree.loose->parent = &node;
    }
    tree.loose = &node;
}

void take_loose(Tree &tree, TreeNode &node) {
    (node.parent == nullptr ? tree.loose : node.parent->left) = node.left;
    if (node.left != nullptr) {
        node.left->parent = node.parent;
    }
}

bool is_result(int32_t compared) {
    return compared >= BALANCED_TREE_EQUAL && compared <= BALANCED_TREE_GREATER;
}

Position find_position(Tree &tree, const void *key) {
    Position at{.result = kNotFound, .parent = nullptr, .link = &tree.root};
    while (*at.link != nullptr) {
        // One of them is compared next; large trees wait for memory most of the time.
        __builtin_prefetch((*at.link)->left);
        __builtin_prefetch((*at.link)->right);
        const int32_t compared = tree.compare(key, object_of(*at.link));
        if (compared == BALANCED_TREE_EQUAL || !is_result(compared)) {
            at.result = compared == BALANCED_TREE_EQUAL ? kOk : kInvalid;
            return at;
        }
        at.parent = *at.link;
        at.link = compared == BALANCED_TREE_LESS ? &at.parent->left : &at.parent->right;
    }
    return at;
}

// The neighbour of an empty link on the wanted side.
TreeNode *neighbour(const Position &at, bool next) {
    if (at.parent == nullptr) {
        return nullptr;
    }
    const bool parent_is_next = at.link == &at.parent->left;
    if (parent_is_next == next) {
        return at.parent;
    }
    return next ? tree_next(at.parent) : tree_previous(at.parent);
}

// Whether the key belongs at the empty link, between the neighbours of that.
bool fits(const Tree &tree, const Position &at, const void *key) {
    TreeNode *before = neighbour(at, false);
    TreeNode *behind = neighbour(at, true);
    return (before == nullptr || tree.compare(key, object_of(before)) == BALANCED_TREE_GREATER) &&
           (behind == nullptr || tree.compare(key, object_of(behind)) == BALANCED_TREE_LESS);
}

// What is inserted was mostly searched for just before.
Position position_to_insert(Tree &tree, const void *key) {
    const Position missed = std::exchange(tree.missed, {});
    return missed.link != nullptr && fits(tree, missed, key) ? missed : find_position(tree, key);
}

TreeNode *select(const Position &at, int32_t mode) {
    const bool found = at.result == kOk;
    switch (mode) {
        case BALANCED_TREE_SEARCH_AT_OR_NEXT:
            return found ? *at.link : neighbour(at, true);
        case BALANCED_TREE_SEARCH_NEXT:
            return found ? tree_next(*at.link) : neighbour(at, true);
        case BALANCED_TREE_SEARCH_AT_OR_PREVIOUS:
            return found ? *at.link : neighbour(at, false);
        case BALANCED_TREE_SEARCH_PREVIOUS:
            return found ? tree_previous(*at.link) : neighbour(at, false);
        default:
            return found ? *at.link : nullptr;
    }
}

void free_loose(Tree &tree) {
    while (tree.loose != nullptr) {
        TreeNode *node = tree.loose;
        tree.loose = node->left;
        ph_free_named(node);
    }
}

// Leaves first, without a stack: a node is freed when both of its links are empty.
void free_inserted(Tree &tree) {
    TreeNode *node = tree.root;
    while (node != nullptr) {
        TreeNode *child = node->left != nullptr ? node->left : node->right;
        if (child != nullptr) {
            (child == node->left ? node->left : node->right) = nullptr;
            node = child;
        } else {
            TreeNode *parent = node->parent;
            ph_free_named(node);
            node = parent;
        }
    }
}

}  // namespace

int32_t balanced_tree_init(int32_t (*compare)(const void *a, const void *b), uintptr_t,
                           void **tree) {
    if (compare == nullptr || tree == nullptr) {
        return kInvalid;
    }
    auto *made = static_cast<Tree *>(ph_calloc_named(kTagTree, 1, sizeof(Tree)));
    if (made == nullptr) {
        return kNoMemory;
    }
    made->compare = compare;
    *tree = made;
    return kOk;
}

int32_t balanced_tree_allocate_object(void *handle, void **object, size_t size) {
    if (handle == nullptr || object == nullptr) {
        return kInvalid;
    }
    if (size > SIZE_MAX - sizeof(Holder)) {
        return kNoMemory;
    }
    auto *tree = static_cast<Tree *>(handle);
    auto *holder = static_cast<Holder *>(ph_calloc_named(kTagTreeObject, 1, sizeof(Holder) + size));
    if (holder == nullptr) {
        return kNoMemory;
    }
    holder->tree = tree;
    add_loose(*tree, holder->node);
    *object = object_of(&holder->node);
    return kOk;
}

int32_t balanced_tree_insert(void *handle, void *object, uintptr_t) {
    if (handle == nullptr || object == nullptr) {
        return kInvalid;
    }
    auto *tree = static_cast<Tree *>(handle);
    Holder *holder = holder_of(object);
    if (holder->tree != tree || holder->inserted) {
        return kInvalid;
    }
    const Position at = position_to_insert(*tree, object);
    if (at.result != kNotFound) {
        return at.result == kOk ? kExists : at.result;
    }
    take_loose(*tree, holder->node);
    tree_link(tree->root, holder->node, at.parent, *at.link);
    holder->inserted = true;
    return kOk;
}

int32_t balanced_tree_search(void *handle, int32_t mode, const void *key, void **object,
                             uintptr_t) {
    if (handle == nullptr || object == nullptr || mode < 0 ||
        mode > BALANCED_TREE_SEARCH_PREVIOUS) {
        return kInvalid;
    }
    auto *tree = static_cast<Tree *>(handle);
    const Position at = find_position(*tree, key);
    tree->missed = at.result == kNotFound ? at : Position{};
    if (at.result == kInvalid) {
        return kInvalid;
    }
    TreeNode *node = select(at, mode);
    if (node == nullptr) {
        return kNotFound;
    }
    *object = object_of(node);
    return kOk;
}

int32_t balanced_tree_walk(void *handle, int32_t (*fn)(void *object, void *context), void *context,
                           int32_t *status) {
    if (handle == nullptr || fn == nullptr) {
        return kInvalid;
    }
    int32_t ended = 0;
    for (TreeNode *node = tree_first(static_cast<Tree *>(handle)->root); node != nullptr;) {
        TreeNode *next = tree_next(node);
        if (fn(object_of(node), context) == 0) {
            ended = 1;
            break;
        }
        node = next;
    }
    if (status != nullptr) {
        *status = ended;
    }
    return kOk;
}

int32_t balanced_tree_free_object(void *handle, void *object) {
    if (handle == nullptr || object == nullptr || holder_of(object)->tree != handle) {
        return kInvalid;
    }
    auto *tree = static_cast<Tree *>(handle);
    Holder *holder = holder_of(object);
    if (holder->inserted) {
        tree->missed = {};
        tree_unlink(tree->root, holder->node);
    } else {
        take_loose(*tree, holder->node);
    }
    ph_free_named(holder);
    return kOk;
}

int32_t balanced_tree_shutdown(void *handle, uintptr_t) {
    if (handle == nullptr) {
        return kInvalid;
    }
    auto *tree = static_cast<Tree *>(handle);
    free_inserted(*tree);
    free_loose(*tree);
    ph_free_named(tree);
    return kOk;
}
