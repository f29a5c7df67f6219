// The red-black tree of caller-owned data pointers. The tree keeps no keys:
// every lookup names its target with a key and a callback comparing that key
// with a node's data (negative: the key lies to the left).
#pragma once

#include <zksupt/containers.h>

#include <cstdint>

namespace zksupt::containers {

using TreeCallback = RedBlackTreeCallback;

enum WalkOrder : uint32_t {
    kRootOnly = 0,
    kAscending = 1,
    kDescending = 2,
    kGuided = 3,      // a search, the callback acting as the comparison
    kGuidedFull = 4,  // every node if need be, the callback's sign choosing the side to try first
};

// Asks for what the next two steps of a descent below node will read: the
// data of its children, which the compare callback reads through, and the
// nodes below them. Callers keep their records apart from the nodes, so
// each step would otherwise wait for two misses in a row; this way the next
// level's come in while this one is compared. Prefetching a null pointer is
// harmless. Always inlined: GCC takes a function that only prefetches for
// one without effects and drops the calls to it.
[[gnu::always_inline]] inline void prefetchBelow(const RedBlackTreeNode *node) noexcept
{
    if (const RedBlackTreeNode *left = node->left) {
        __builtin_prefetch(left->data);
        __builtin_prefetch(left->left);
        __builtin_prefetch(left->right);
    }
    if (const RedBlackTreeNode *right = node->right) {
        __builtin_prefetch(right->data);
        __builtin_prefetch(right->left);
        __builtin_prefetch(right->right);
    }
}

// The node whose data compares equal to key, or null.
template <class Node> Node *findNode(Node *root, void *key, TreeCallback compare) noexcept
{
    while (root != nullptr) {
        prefetchBelow(root);
        const int32_t order = compare(key, root->data);
        if (order == 0)
            return root;
        root = order < 0 ? root->left : root->right;
    }
    return nullptr;
}

// tree.cpp. Attach and detach alike: the root becomes null, no node is freed.
void resetTree(RedBlackTree *tree) noexcept;
int32_t isTreeEmpty(const RedBlackTreeNode *root) noexcept;

// SUCCESS, DUPLICATE when a node compares equal, NO_MEMORY when no node can
// be allocated, INVALID_PARAMETER for null.
int32_t insertData(RedBlackTree *tree, void *data, void *key, TreeCallback compare) noexcept;
// The data pointer that data replaced, or null when no node matched.
void *replaceData(RedBlackTree *tree, void *data, void *key, TreeCallback compare) noexcept;
// SUCCESS, NOT_FOUND when no node matches, INVALID_PARAMETER for null. The
// removed data pointer is stored in *removed when removed is not null.
int32_t deleteData(RedBlackTree *tree, void *key, TreeCallback compare, void **removed = nullptr) noexcept;
// tree_walk.cpp. Frees every node, passing each data pointer to release (when
// not null) first.
void deleteTree(RedBlackTree *tree, void *context, RedBlackTreeFreeCallback release) noexcept;
// The data of the node where callback returned 0, or null.
void *walkTree(const RedBlackTreeNode *root, void *context, TreeCallback callback, uint32_t order) noexcept;

// tree_balance.cpp. Balancing, for the operations above: the new red node is already hung in
// place; the unlinked node has at most one child and is not freed.
void rebalanceAfterInsert(RedBlackTree *tree, RedBlackTreeNode *node) noexcept;
void unlinkNode(RedBlackTree *tree, RedBlackTreeNode *node) noexcept;

}  // namespace zksupt::containers
