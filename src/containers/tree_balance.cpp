// Rotations and the insert and delete fix-ups of the red-black tree: the
// textbook algorithm with null leaves counted black, each mirrored pair of
// cases written once over a side.
#include "containers/tree.h"
#include "containers/tree_node.h"

#include <bit>

namespace zksupt::containers {
namespace {

// The field that points at node: its parent's child field, or the root.
RedBlackTreeNode *&linkTo(RedBlackTree *tree, RedBlackTreeNode *node) noexcept
{
    RedBlackTreeNode *parent = node->parent;
    return parent == nullptr ? *tree : child(parent, sideOf(node, parent));
}

// Moves node down towards side; its child on the other side takes its place.
void rotate(RedBlackTree *tree, RedBlackTreeNode *node, Side side) noexcept
{
    RedBlackTreeNode *riser = child(node, other(side));
    RedBlackTreeNode *inner = child(riser, side);
    child(node, other(side)) = inner;
    if (inner != nullptr)
        inner->parent = node;
    linkTo(tree, node) = riser;
    riser->parent = node->parent;
    child(riser, side) = node;
    node->parent = riser;
}

// node stands where a black node was removed and its side lacks one black;
// parent is given because node may be a null leaf.
void rebalanceAfterUnlink(RedBlackTree *tree, RedBlackTreeNode *node, RedBlackTreeNode *parent) noexcept
{
    while (node != *tree && !isRed(node)) {
        const Side side = node == parent->left ? Side::left : Side::right;
        // The sibling's side has one black more than node's, so it is never a null leaf.
        RedBlackTreeNode *sibling = child(parent, other(side));
        if (isRed(sibling)) {
            sibling->color = kBlack;
            parent->color = kRed;
            rotate(tree, parent, side);
            sibling = child(parent, other(side));
        }
        if (!isRed(sibling->left) && !isRed(sibling->right)) {
            sibling->color = kRed;  // both sides now lack a black: pass the debt up
            node = parent;
            parent = node->parent;
            continue;
        }
        if (!isRed(child(sibling, other(side)))) {
            child(sibling, side)->color = kBlack;
            sibling->color = kRed;
            rotate(tree, sibling, other(side));
            sibling = child(parent, other(side));
        }
        sibling->color = parent->color;
        parent->color = kBlack;
        child(sibling, other(side))->color = kBlack;
        rotate(tree, parent, side);
        node = *tree;
    }
    if (node != nullptr)
        node->color = kBlack;
}

// Links nodes [first, last) below parent, the middle one at the top, so the
// two sides differ by at most one node at every level. Then every level but
// the deepest is full: the deepest, when it is not full itself, is red and
// everything above it black, which gives every path the same black count.
RedBlackTreeNode *linkRange(RedBlackTreeNode *nodes, uint32_t first, uint32_t last, RedBlackTreeNode *parent,
                            uint32_t depth, uint32_t redDepth) noexcept
{
    if (first == last)
        return nullptr;
    const uint32_t middle = first + (last - first) / 2;
    RedBlackTreeNode *node = nodes + middle;
    node->parent = parent;
    node->color = depth == redDepth ? kRed : kBlack;
    node->left = linkRange(nodes, first, middle, node, depth + 1, redDepth);
    node->right = linkRange(nodes, middle + 1, last, node, depth + 1, redDepth);
    return node;
}

}  // namespace

RedBlackTreeNode *linkSorted(RedBlackTreeNode *nodes, uint32_t count) noexcept
{
    // The full levels number floor(log2(count + 1)); the deepest level is
    // partial unless count + 1 is a power of two, and lies just below them.
    const auto fullLevels = static_cast<uint32_t>(std::bit_width(uint64_t{count} + 1) - 1);
    return linkRange(nodes, 0, count, nullptr, 0, fullLevels);
}

void rebalanceAfterInsert(RedBlackTree *tree, RedBlackTreeNode *node) noexcept
{
    RedBlackTreeNode *parent = nullptr;
    while (isRed(parent = node->parent)) {
        RedBlackTreeNode *grandparent = parent->parent;  // a red node is never the root
        const Side side = sideOf(parent, grandparent);
        RedBlackTreeNode *uncle = child(grandparent, other(side));
        if (isRed(uncle)) {
            parent->color = kBlack;
            uncle->color = kBlack;
            grandparent->color = kRed;
            node = grandparent;
            continue;
        }
        if (node == child(parent, other(side))) {  // an inner grandchild turns outer first
            rotate(tree, parent, side);
            node = parent;
            parent = node->parent;
        }
        parent->color = kBlack;
        grandparent->color = kRed;
        rotate(tree, grandparent, other(side));
    }
    (*tree)->color = kBlack;
}

void unlinkNode(RedBlackTree *tree, RedBlackTreeNode *node) noexcept
{
    RedBlackTreeNode *orphan = node->left != nullptr ? node->left : node->right;
    RedBlackTreeNode *parent = node->parent;
    linkTo(tree, node) = orphan;
    if (orphan != nullptr)
        orphan->parent = parent;
    if (node->color == kBlack)
        rebalanceAfterUnlink(tree, orphan, parent);
}

}  // namespace zksupt::containers
