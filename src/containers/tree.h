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
// deleteData for a caller that owns its nodes' storage: the node that left
// the tree is handed back instead of freed (with two children that is the
// successor's node, whose data moved into the matched one), null when no
// node matches. The removed data pointer is stored in *removed. Arguments
// must not be null.
RedBlackTreeNode *detachData(RedBlackTree *tree, void *key, TreeCallback compare, void **removed) noexcept;

// Frees (or hands to a caller that owns its nodes' storage) one node.
using NodeRelease = void (*)(void *context, RedBlackTreeNode *node);

// tree_walk.cpp. Removes every node, passing each data pointer to release
// (when not null) first; nodes are freed, or given to releaseNode when one
// is given.
void deleteTree(RedBlackTree *tree, void *context, RedBlackTreeFreeCallback release,
                NodeRelease releaseNode = nullptr) noexcept;
// The data of the node where callback returned 0, or null.
void *walkTree(const RedBlackTreeNode *root, void *context, TreeCallback callback, uint32_t order) noexcept;

// tree_balance.cpp. Balancing, for the operations above: the new red node is already hung in
// place; the unlinked node has at most one child and is not freed.
void rebalanceAfterInsert(RedBlackTree *tree, RedBlackTreeNode *node) noexcept;
void unlinkNode(RedBlackTree *tree, RedBlackTreeNode *node) noexcept;

// tree_balance.cpp. A whole tree at once from data already in ascending
// order: links the count nodes (the caller's storage, each holding its
// data) into a balanced red-black tree and returns its root, null for none.
// No comparison is made. Such a tree takes inserts like any other; nodes
// leave it through detachData or deleteTree with a releaseNode.
RedBlackTreeNode *linkSorted(RedBlackTreeNode *nodes, uint32_t count) noexcept;

// The data of a tree in ascending order, one at a time, by the parent
// links: no recursion and no call through a pointer per node, so a caller's
// loop over it stays one plain loop.
class InOrder {
  public:
    explicit InOrder(const RedBlackTreeNode *root) noexcept : node_(leftmostBelow(root)) {}

    // The next data pointer, null after the last (a tree holds no null data).
    void *next() noexcept
    {
        if (node_ == nullptr)
            return nullptr;
        void *data = node_->data;
        if (node_->right != nullptr) {
            node_ = leftmostBelow(node_->right);
        } else {
            const RedBlackTreeNode *from = nullptr;
            do {
                from = node_;
                node_ = node_->parent;
            } while (node_ != nullptr && node_->right == from);
        }
        return data;
    }

  private:
    static const RedBlackTreeNode *leftmostBelow(const RedBlackTreeNode *node) noexcept
    {
        while (node != nullptr && node->left != nullptr)
            node = node->left;
        return node;
    }

    const RedBlackTreeNode *node_;
};

}  // namespace zksupt::containers
