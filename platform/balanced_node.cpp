#include "platform/balanced_node.h"

namespace oru::platform {

namespace {

// Everything below is told once for both sides; this is the link on one of them.
using Side = TreeNode *TreeNode::*;

Side other(Side side) {
    return side == &TreeNode::left ? &TreeNode::right : &TreeNode::left;
}

int32_t height(const TreeNode *node) {
    return node == nullptr ? 0 : node->height;
}

void set_height(TreeNode &node) {
    const int32_t left = height(node.left);
    const int32_t right = height(node.right);
    node.height = (left > right ? left : right) + 1;
}

// Puts `child`, perhaps null, where `node` hangs.
void replace(TreeNode *&root, const TreeNode &node, TreeNode *child) {
    TreeNode *parent = node.parent;
    if (parent == nullptr) {
        root = child;
    } else {
        (parent->left == &node ? parent->left : parent->right) = child;
    }
    if (child != nullptr) {
        child->parent = parent;
    }
}

void hang(TreeNode &parent, Side side, TreeNode *child) {
    parent.*side = child;
    if (child != nullptr) {
        child->parent = &parent;
    }
}

// Lifts the child on `side` above its parent and gives it.
TreeNode *lift(TreeNode *&root, TreeNode &node, Side side) {
    TreeNode *child = node.*side;
    replace(root, node, child);
    hang(node, side, child->*other(side));
    hang(*child, other(side), &node);
    set_height(node);
    set_height(*child);
    return child;
}

TreeNode *lighten(TreeNode *&root, TreeNode &node, Side heavy) {
    TreeNode *child = node.*heavy;
    if (height(child->*other(heavy)) > height(child->*heavy)) {
        lift(root, *child, other(heavy));
    }
    return lift(root, node, heavy);
}

// From a node whose side has changed up to the root.
void rebalance(TreeNode *&root, TreeNode *node) {
    while (node != nullptr) {
        const int32_t old_height = node->height;
        set_height(*node);
        const int32_t lean = height(node->right) - height(node->left);
        if (lean > 1) {
            node = lighten(root, *node, &TreeNode::right);
        } else if (lean < -1) {
            node = lighten(root, *node, &TreeNode::left);
        }
        if (node->height == old_height) {
            return;
        }
        node = node->parent;
    }
}

TreeNode *outermost(TreeNode *node, Side side) {
    while (node != nullptr && node->*side != nullptr) {
        node = node->*side;
    }
    return node;
}

TreeNode *step(TreeNode *node, Side side) {
    if (node->*side != nullptr) {
        return outermost(node->*side, other(side));
    }
    while (node->parent != nullptr && node->parent->*side == node) {
        node = node->parent;
    }
    return node->parent;
}

// The node behind takes the place of a node that has both sides; gives where balance may be lost.
TreeNode *replace_by_next(TreeNode *&root, TreeNode &node) {
    TreeNode *next = outermost(node.right, &TreeNode::left);
    TreeNode *changed = next->parent == &node ? next : next->parent;
    replace(root, *next, next->right);
    hang(*next, &TreeNode::left, node.left);
    hang(*next, &TreeNode::right, node.right);
    next->height = node.height;
    replace(root, node, next);
    return changed;
}

}  // namespace

void tree_link(TreeNode *&root, TreeNode &node, TreeNode *parent, TreeNode *&link) {
    node = {.parent = parent, .left = nullptr, .right = nullptr, .height = 1};
    link = &node;
    rebalance(root, parent);
}

void tree_unlink(TreeNode *&root, TreeNode &node) {
    TreeNode *changed = node.parent;
    if (node.left != nullptr && node.right != nullptr) {
        changed = replace_by_next(root, node);
    } else {
        replace(root, node, node.left != nullptr ? node.left : node.right);
    }
    rebalance(root, changed);
}

TreeNode *tree_first(TreeNode *root) {
    return outermost(root, &TreeNode::left);
}

TreeNode *tree_next(TreeNode *node) {
    return step(node, &TreeNode::right);
}

TreeNode *tree_previous(TreeNode *node) {
    return step(node, &TreeNode::left);
}

}  // namespace oru::platform
