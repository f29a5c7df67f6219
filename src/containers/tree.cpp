// Insert, replace and delete of the red-black tree.
#include "containers/tree.h"
#include "containers/tree_node.h"

#include <zksupt/status.h>

#include <cstdlib>

namespace zksupt::containers {

void resetTree(RedBlackTree *tree) noexcept
{
    if (tree != nullptr)
        *tree = nullptr;
}

int32_t isTreeEmpty(const RedBlackTreeNode *root) noexcept
{
    return root == nullptr ? 1 : 0;
}

int32_t insertData(RedBlackTree *tree, void *data, void *key, TreeCallback compare) noexcept
{
    if (tree == nullptr || data == nullptr || key == nullptr || compare == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    RedBlackTreeNode *parent = nullptr;
    int32_t order = 0;
    for (RedBlackTreeNode *node = *tree; node != nullptr; node = order < 0 ? node->left : node->right) {
        prefetchBelow(node);
        order = compare(key, node->data);
        if (order == 0)
            return SM_STATUS_DUPLICATE;
        parent = node;
    }
    auto *node = static_cast<RedBlackTreeNode *>(std::malloc(sizeof(RedBlackTreeNode)));
    if (node == nullptr)
        return SM_STATUS_NO_MEMORY;
    *node = RedBlackTreeNode{nullptr, nullptr, parent, data, kRed};
    if (parent == nullptr)
        *tree = node;
    else
        child(parent, order < 0 ? Side::left : Side::right) = node;
    rebalanceAfterInsert(tree, node);
    return SM_STATUS_SUCCESS;
}

// The shape stays as it is, so the new data must compare as the old did.
void *replaceData(RedBlackTree *tree, void *data, void *key, TreeCallback compare) noexcept
{
    if (tree == nullptr || data == nullptr || key == nullptr || compare == nullptr)
        return nullptr;
    RedBlackTreeNode *node = findNode(*tree, key, compare);
    if (node == nullptr)
        return nullptr;
    void *old = node->data;
    node->data = data;
    return old;
}

RedBlackTreeNode *detachData(RedBlackTree *tree, void *key, TreeCallback compare, void **removed) noexcept
{
    RedBlackTreeNode *match = findNode(*tree, key, compare);
    if (match == nullptr)
        return nullptr;
    *removed = match->data;
    RedBlackTreeNode *leaving = match;
    if (match->left != nullptr && match->right != nullptr) {
        // A node with two children stays where it is and takes over its
        // successor's data; the successor, which has no left child, leaves.
        leaving = match->right;
        while (leaving->left != nullptr)
            leaving = leaving->left;
        match->data = leaving->data;
    }
    unlinkNode(tree, leaving);
    return leaving;
}

int32_t deleteData(RedBlackTree *tree, void *key, TreeCallback compare, void **removed) noexcept
{
    if (tree == nullptr || key == nullptr || compare == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    void *data = nullptr;
    RedBlackTreeNode *leaving = detachData(tree, key, compare, &data);
    if (leaving == nullptr)
        return SM_STATUS_NOT_FOUND;
    if (removed != nullptr)
        *removed = data;
    std::free(leaving);
    return SM_STATUS_SUCCESS;
}

}  // namespace zksupt::containers
