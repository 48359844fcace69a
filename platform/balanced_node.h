// Links of a height-balanced binary tree: the heights of the two sides of a node differ by one at
// most. Knows nothing of keys.
#pragma once

#include <cstdint>

namespace oru::platform {

struct TreeNode {
    TreeNode *parent;
    TreeNode *left;
    TreeNode *right;
    int32_t height;  // of the part below and with this node, 1 for a leaf
};

// Puts `node` into the empty `link` of `parent` (the root's link for a null parent).
void tree_link(TreeNode *&root, TreeNode &node, TreeNode *parent, TreeNode *&link);
void tree_unlink(TreeNode *&root, TreeNode &node);

TreeNode *tree_first(TreeNode *root);
TreeNode *tree_next(TreeNode *node);
TreeNode *tree_previous(TreeNode *node);

}  // namespace oru::platform
