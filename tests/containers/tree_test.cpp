// The red-black tree, checked node by node: links, colours, black heights and
// the exact data pointers in order, against a std::map model.
#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <numeric>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include <zksupt/zksupt.h>

namespace {

int valueOf(const void *data)
{
    return *static_cast<const int *>(data);
}

int32_t compareInts(void *key, void *data)
{
    return (valueOf(key) > valueOf(data)) - (valueOf(key) < valueOf(data));
}

// Appends the data below node in order and returns its black height;
// problem receives the last broken rule.
int checkNodes(const RedBlackTreeNode *node, const RedBlackTreeNode *parent, std::vector<void *> &data,
               std::string &problem)
{
    if (node == nullptr)
        return 1;
    if (node->parent != parent || node->color > 1 || (node->color == 1 && parent != nullptr && parent->color == 1))
        problem = "a wrong parent link, a colour that is not 0 or 1, or a red child of a red node";
    const int left = checkNodes(node->left, node, data, problem);
    data.push_back(node->data);
    if (left != checkNodes(node->right, node, data, problem))
        problem = "unequal black heights";
    return left + (node->color == 0 ? 1 : 0);
}

::testing::AssertionResult holds(RedBlackTree root, const std::vector<void *> &expected)
{
    std::string problem = root != nullptr && root->color != 0 ? "red root" : "";
    std::vector<void *> data;
    checkNodes(root, nullptr, data, problem);
    if (problem.empty() && data != expected)
        problem = "in-order data differ from the model";
    return problem.empty() ? ::testing::AssertionSuccess() : ::testing::AssertionFailure() << problem;
}

// Every refusal, replace, guided search (order 3) and two-children delete is checked on the way.
TEST(RedBlackTree, RandomInsertsReplacesAndDeletesKeepTheInvariants)
{
    constexpr int kKeys = 500;
    std::vector<int> first(kKeys), second(kKeys);  // two distinct data pointers per key
    std::iota(first.begin(), first.end(), 0);
    std::iota(second.begin(), second.end(), 0);
    std::map<int, int *> model;
    RedBlackTree tree;
    SMRedBlackTreeAttach(&tree);
    std::mt19937 random(20261121);
    for (int step = 0; step < 6000; ++step) {
        int key = static_cast<int>(random() % kKeys), sought = static_cast<int>(random() % kKeys);
        const auto found = model.find(key);
        const bool present = found != model.end();
        int *fresh = present && found->second == &first[key] ? &second[key] : &first[key];
        const unsigned operation = random() % 10;
        if (operation < 5) {
            ASSERT_EQ(SMRedBlackTreeDataInsert(&tree, fresh, &key, compareInts), present ? 0x102 : 0);
            model.emplace(key, fresh);
        } else if (operation < 7) {
            ASSERT_EQ(SMRedBlackTreeDataReplace(&tree, fresh, &key, compareInts), present ? found->second : nullptr);
            if (present)
                found->second = fresh;
        } else {
            const RedBlackTreeNode *matched = tree;
            while (matched != nullptr && valueOf(matched->data) != key)
                matched = valueOf(matched->data) > key ? matched->left : matched->right;
            const bool twoChildren = matched != nullptr && matched->left != nullptr && matched->right != nullptr;
            ASSERT_EQ(SMRedBlackTreeDataDelete(&tree, &key, compareInts), present ? 0 : 0x100);
            if (twoChildren) {
                ASSERT_EQ(matched->data, std::next(found)->second) << "the node stays and takes its successor's data";
            }
            model.erase(key);
        }
        std::vector<void *> expected;
        for (const auto &entry : model)
            expected.push_back(entry.second);
        ASSERT_TRUE(holds(tree, expected)) << "after step " << step;
        ASSERT_EQ(SMRedBlackTreeIsEmpty(tree), model.empty() ? 1 : 0);
        const auto match = model.find(sought);
        ASSERT_EQ(SMRedBlackTreeDataWalk(tree, &sought, compareInts, 3),
                  match != model.end() ? match->second : nullptr);
    }
    SMRedBlackTreeDelete(&tree, nullptr, nullptr);
    EXPECT_EQ(tree, nullptr);
}

TEST(RedBlackTree, NullArgumentsAreRefusedOrIgnored)
{
    int one = 1;
    RedBlackTreeNode node{};
    RedBlackTree tree = &node;
    SMRedBlackTreeDetach(&tree);  // frees nothing: the node is not the tree's
    EXPECT_EQ(SMRedBlackTreeIsEmpty(tree), 1);
    EXPECT_EQ(SMRedBlackTreeDataWalk(tree, &one, compareInts, 0), nullptr) << "empty tree";
    EXPECT_EQ(SMRedBlackTreeDataDelete(&tree, &one, compareInts), 0x100) << "empty tree";
    EXPECT_EQ(SMRedBlackTreeDataInsert(nullptr, &one, &one, compareInts), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataInsert(&tree, nullptr, &one, compareInts), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataInsert(&tree, &one, nullptr, compareInts), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataInsert(&tree, &one, &one, nullptr), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataDelete(nullptr, &one, compareInts), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataDelete(&tree, nullptr, compareInts), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataDelete(&tree, &one, nullptr), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataReplace(nullptr, &one, &one, compareInts), nullptr);
    EXPECT_EQ(tree, nullptr) << "nothing was inserted";
    SMRedBlackTreeAttach(nullptr);
    SMRedBlackTreeDelete(nullptr, nullptr, nullptr);
}

// Walk and release callbacks record the values they see and stop at stopAt.
struct Visits {
    int stopAt = -1;
    int32_t sign = 1;  // what the callback returns elsewhere
    std::vector<int> seen;
};

int32_t visit(void *context, void *data)
{
    auto &visits = *static_cast<Visits *>(context);
    visits.seen.push_back(valueOf(data));
    return valueOf(data) == visits.stopAt ? 0 : visits.sign;
}

// The values by the shape: each node before its subtrees, the given side first.
void preorder(const RedBlackTreeNode *node, bool leftFirst, std::vector<int> &out)
{
    if (node == nullptr)
        return;
    out.push_back(valueOf(node->data));
    preorder(leftFirst ? node->left : node->right, leftFirst, out);
    preorder(leftFirst ? node->right : node->left, leftFirst, out);
}

// {order, what the callback returns elsewhere, value it stops at, values it sees}. Without a
// match order 4 visits every node, the sign choosing the subtree to search first. Deleting the
// whole tree releases children before parents, right before left: preorder left first, reversed.
TEST(RedBlackTree, WalksInEveryOrderAndDeletesChildrenFirstRightBeforeLeft)
{
    std::vector<int> up(1000), left, right;
    std::iota(up.begin(), up.end(), 1);
    RedBlackTree tree = nullptr;
    for (int &value : up)
        ASSERT_EQ(SMRedBlackTreeDataInsert(&tree, &value, &value, compareInts), 0);
    preorder(tree, true, left);
    preorder(tree, false, right);
    const std::vector<int> down(up.rbegin(), up.rend());
    const int root = valueOf(tree->data);
    // clang-format off
    const std::tuple<uint32_t, int32_t, int, std::vector<int>> walks[] = {
        {0, 1, root, {root}},    {1, 1, -1, up},    {1, 1, 10, {up.begin(), up.begin() + 10}},
        {2, 1, -1, down},        {2, 1, 991, {down.begin(), down.begin() + 10}},
        {4, -1, -1, left},       {4, -1, left[500], {left.begin(), left.begin() + 501}},
        {4, 1, -1, right},       {4, 1, right[500], {right.begin(), right.begin() + 501}},
        {5, 1, -1, {}}};
    // clang-format on
    for (const auto &[order, sign, stopAt, seen] : walks) {
        Visits visits{stopAt, sign, {}};
        EXPECT_EQ(SMRedBlackTreeDataWalk(tree, &visits, visit, order), stopAt > 0 ? &up[stopAt - 1] : nullptr);
        EXPECT_EQ(visits.seen, seen) << "order " << order << ", stopping at " << stopAt;
    }
    Visits released;
    SMRedBlackTreeDelete(&tree, &released, [](void *context, void *data) { visit(context, data); });
    EXPECT_EQ(tree, nullptr);
    EXPECT_EQ(released.seen, std::vector<int>(left.rbegin(), left.rend()));
}

}  // namespace
