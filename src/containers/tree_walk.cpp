// Walks over the red-black tree and the deletion of a whole tree.
#include "containers/tree.h"
#include "containers/tree_node.h"

#include <cstdlib>

namespace zksupt::containers {
namespace {

using Node = const RedBlackTreeNode;

// In order, starting with the given side. Only that side recurses, so the
// depth stays within the tree's height.
Node *walkSorted(Node *node, void *context, TreeCallback callback, Side first) noexcept
{
    for (; node != nullptr; node = child(node, other(first))) {
        if (Node *found = walkSorted(child(node, first), context, callback, first))
            return found;
        if (callback(context, node->data) == 0)
            return node;
    }
    return nullptr;
}

// Every node if need be: the callback's sign at a node picks the subtree to
// search before the other one.
Node *searchAll(Node *node, void *context, TreeCallback callback) noexcept
{
    while (node != nullptr) {
        const int32_t order = callback(context, node->data);
        if (order == 0)
            return node;
        const Side first = order < 0 ? Side::left : Side::right;
        if (Node *found = searchAll(child(node, first), context, callback))
            return found;
        node = child(node, other(first));
    }
    return nullptr;
}

Node *walkFrom(Node *root, void *context, TreeCallback callback, uint32_t order) noexcept
{
    switch (order) {
    case kRootOnly:
        return callback(context, root->data) == 0 ? root : nullptr;
    case kAscending:
        return walkSorted(root, context, callback, Side::left);
    case kDescending:
        return walkSorted(root, context, callback, Side::right);
    case kGuided:
        return findNode(root, context, callback);
    case kGuidedFull:
        return searchAll(root, context, callback);
    default:
        return nullptr;
    }
}

}  // namespace

void *walkTree(const RedBlackTreeNode *root, void *context, TreeCallback callback, uint32_t order) noexcept
{
    if (root == nullptr || context == nullptr || callback == nullptr)
        return nullptr;
    Node *stop = walkFrom(root, context, callback, order);
    return stop != nullptr ? stop->data : nullptr;
}

// Post-order, right subtree before left. A node goes once both its subtrees
// are gone and the walk climbs back by the parent links, so it needs neither
// a stack nor any rebalancing.
void deleteTree(RedBlackTree *tree, void *context, RedBlackTreeFreeCallback release, NodeRelease releaseNode) noexcept
{
    if (tree == nullptr)
        return;
    RedBlackTreeNode *node = *tree;
    *tree = nullptr;
    while (node != nullptr) {
        if (node->right != nullptr) {
            node = node->right;
        } else if (node->left != nullptr) {
            node = node->left;
        } else {
            RedBlackTreeNode *parent = node->parent;
            if (parent != nullptr)
                child(parent, sideOf(node, parent)) = nullptr;
            if (release != nullptr)
                release(context, node->data);
            if (releaseNode != nullptr)
                releaseNode(context, node);
            else
                std::free(node);
            node = parent;
        }
    }
}

}  // namespace zksupt::containers
