// Small helpers over red-black tree nodes, shared by the balancing code and
// the walks. Left and right are handled through a side, so that every
// mirrored case is written once.
#pragma once

#include <zksupt/containers.h>

#include <cstdint>

namespace zksupt::containers {

inline constexpr uint32_t kBlack = 0;
inline constexpr uint32_t kRed = 1;

enum class Side { left, right };

constexpr Side other(Side side) noexcept
{
    return side == Side::left ? Side::right : Side::left;
}

// The child field on one side; const for a const node.
template <class Node> auto &child(Node *node, Side side) noexcept
{
    return side == Side::left ? node->left : node->right;
}

inline Side sideOf(const RedBlackTreeNode *node, const RedBlackTreeNode *parent) noexcept
{
    return node == parent->left ? Side::left : Side::right;
}

// Null leaves count as black.
inline bool isRed(const RedBlackTreeNode *node) noexcept
{
    return node != nullptr && node->color == kRed;
}

}  // namespace zksupt::containers
