// The red-black tree, checked node by node: links, colours, black heights and
// the exact data pointers in order, against a std::map model.
#include <gtest/gtest.h>

#include <sys/resource.h>

#include <cmath>
#include <cstdlib>
#include <map>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include <zksupt/zksupt.h>

#include "support/child.h"

namespace {

int32_t compareInts(void *key, void *data)
{
    const int a = *static_cast<int *>(key);
    const int b = *static_cast<int *>(data);
    return (a > b) - (a < b);
}

// Walks the nodes below node: appends their data in order and returns the
// black height, or -1 after recording the first broken rule in problem.
int checkNodes(const RedBlackTreeNode *node, const RedBlackTreeNode *parent, std::vector<void *> &data,
               std::string &problem)
{
    if (node == nullptr)
        return 1;
    if (node->parent != parent)
        problem = "wrong parent link";
    else if (node->color > 1)
        problem = "colour neither red nor black";
    else if (node->color == 1 && parent != nullptr && parent->color == 1)
        problem = "red child of a red node";
    const int left = checkNodes(node->left, node, data, problem);
    data.push_back(node->data);
    const int right = checkNodes(node->right, node, data, problem);
    if (left != right)
        problem = "unequal black heights";
    return problem.empty() ? left + (node->color == 0 ? 1 : 0) : -1;
}

// The tree's data in order, or a failure naming the first broken invariant.
::testing::AssertionResult holds(RedBlackTree root, const std::vector<void *> &expected)
{
    std::string problem;
    std::vector<void *> data;
    if (root != nullptr && root->color != 0)
        problem = "red root";
    checkNodes(root, nullptr, data, problem);
    if (problem.empty() && data != expected)
        problem = "in-order data differ from the model";
    return problem.empty() ? ::testing::AssertionSuccess() : ::testing::AssertionFailure() << problem;
}

std::vector<void *> valuesOf(const std::map<int, int *> &model)
{
    std::vector<void *> values;
    for (const auto &[key, data] : model)
        values.push_back(data);
    return values;
}

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
        int key = static_cast<int>(random() % kKeys);
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
            ASSERT_EQ(SMRedBlackTreeDataDelete(&tree, &key, compareInts), present ? 0 : 0x100);
            model.erase(key);
        }
        ASSERT_TRUE(holds(tree, valuesOf(model))) << "after step " << step;
    }
    SMRedBlackTreeDelete(&tree, nullptr, nullptr);
    EXPECT_EQ(tree, nullptr);
}

TEST(RedBlackTree, StatusesAndNullArguments)
{
    int one = 1, otherOne = 1, two = 2;
    RedBlackTree tree = nullptr;
    EXPECT_EQ(SMRedBlackTreeDataInsert(nullptr, &one, &one, compareInts), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataInsert(&tree, nullptr, &one, compareInts), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataInsert(&tree, &one, nullptr, compareInts), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataInsert(&tree, &one, &one, nullptr), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataDelete(&tree, &one, compareInts), 0x100);
    EXPECT_EQ(SMRedBlackTreeDataReplace(&tree, &two, &two, compareInts), nullptr);
    EXPECT_EQ(SMRedBlackTreeIsEmpty(tree), 1);

    ASSERT_EQ(SMRedBlackTreeDataInsert(&tree, &one, &one, compareInts), 0);
    EXPECT_EQ(SMRedBlackTreeDataInsert(&tree, &otherOne, &otherOne, compareInts), 0x102);
    EXPECT_EQ(SMRedBlackTreeDataReplace(&tree, &two, &two, compareInts), nullptr);
    EXPECT_TRUE(holds(tree, {&one}));
    EXPECT_EQ(SMRedBlackTreeDataDelete(&tree, &two, compareInts), 0x100);
    EXPECT_EQ(SMRedBlackTreeDataDelete(nullptr, &one, compareInts), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataDelete(&tree, nullptr, compareInts), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataDelete(&tree, &one, nullptr), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataReplace(nullptr, &otherOne, &one, compareInts), nullptr);
    EXPECT_EQ(SMRedBlackTreeDataReplace(&tree, nullptr, &one, compareInts), nullptr);
    EXPECT_EQ(SMRedBlackTreeDataReplace(&tree, &otherOne, &one, compareInts), &one);
    EXPECT_EQ(SMRedBlackTreeIsEmpty(tree), 0);
    EXPECT_EQ(SMRedBlackTreeIsEmpty(nullptr), 1);

    SMRedBlackTreeAttach(nullptr);
    SMRedBlackTreeDetach(nullptr);
    SMRedBlackTreeDelete(nullptr, nullptr, nullptr);
    EXPECT_EQ(SMRedBlackTreeDataDelete(&tree, &one, compareInts), 0);
    EXPECT_EQ(tree, nullptr);
}

// Tree walks record what they visit; a callback stops at stopAt.
struct Visits {
    std::vector<int> seen;
    int stopAt = -1;
    int32_t sign = 1;  // what the callback returns elsewhere
};

int32_t visit(void *context, void *data)
{
    auto &visits = *static_cast<Visits *>(context);
    const int value = *static_cast<int *>(data);
    visits.seen.push_back(value);
    return value == visits.stopAt ? 0 : visits.sign;
}

void release(void *context, void *data)
{
    visit(context, data);
}

// Node, then the side the sign names, then the other side.
void preOrder(const RedBlackTreeNode *node, bool leftFirst, std::vector<int> &out)
{
    if (node == nullptr)
        return;
    out.push_back(*static_cast<int *>(node->data));
    preOrder(leftFirst ? node->left : node->right, leftFirst, out);
    preOrder(leftFirst ? node->right : node->left, leftFirst, out);
}

void postOrderRightFirst(const RedBlackTreeNode *node, std::vector<int> &out)
{
    if (node == nullptr)
        return;
    postOrderRightFirst(node->right, out);
    postOrderRightFirst(node->left, out);
    out.push_back(*static_cast<int *>(node->data));
}

class FilledTree : public ::testing::Test {
  protected:
    static constexpr int kCount = 1000;
    void SetUp() override
    {
        values.resize(kCount);
        std::iota(values.begin(), values.end(), 1);
        for (int &value : values)
            ASSERT_EQ(SMRedBlackTreeDataInsert(&tree, &value, &value, compareInts), 0);
    }
    void TearDown() override { SMRedBlackTreeDelete(&tree, nullptr, nullptr); }
    void *walk(Visits &visits, uint32_t order) { return SMRedBlackTreeDataWalk(tree, &visits, visit, order); }
    std::vector<int> values;
    RedBlackTree tree = nullptr;
};

int height(const RedBlackTreeNode *node)
{
    return node == nullptr ? 0 : 1 + std::max(height(node->left), height(node->right));
}

TEST_F(FilledTree, AscendingInsertsStayBalancedAndWalkInBothDirections)
{
    EXPECT_LE(height(tree), 2 * std::log2(kCount + 1));
    std::vector<void *> expected;
    for (int &value : values)
        expected.push_back(&value);
    EXPECT_TRUE(holds(tree, expected));

    Visits ascending, descending, rootOnly, beyond, none;
    EXPECT_EQ(walk(ascending, 1), nullptr);
    EXPECT_EQ(ascending.seen, values);
    EXPECT_EQ(walk(descending, 2), nullptr);
    EXPECT_EQ(descending.seen, std::vector<int>(values.rbegin(), values.rend()));
    rootOnly.stopAt = *static_cast<int *>(tree->data);
    EXPECT_EQ(walk(rootOnly, 0), tree->data);
    EXPECT_EQ(rootOnly.seen.size(), 1u);
    EXPECT_EQ(walk(beyond, 5), nullptr);
    EXPECT_TRUE(beyond.seen.empty());
    EXPECT_EQ(SMRedBlackTreeDataWalk(tree, nullptr, visit, 1), nullptr);
    EXPECT_EQ(SMRedBlackTreeDataWalk(tree, &none, nullptr, 1), nullptr);
    EXPECT_EQ(SMRedBlackTreeDataWalk(nullptr, &none, visit, 1), nullptr);

    Visits stopped;
    stopped.stopAt = 10;
    EXPECT_EQ(walk(stopped, 1), &values[9]);
    EXPECT_EQ(stopped.seen.size(), 10u);
}

TEST_F(FilledTree, GuidedWalksSearchByTheCallbacksSign)
{
    for (int key : {1, 500, 1000, 0, 1001}) {
        const bool inside = key >= 1 && key <= kCount;
        EXPECT_EQ(SMRedBlackTreeDataWalk(tree, &key, compareInts, 3), inside ? &values[key - 1] : nullptr);
    }
    // Order 4 without a match visits every node, the sign choosing which child's subtree comes first.
    for (const int32_t sign : {-1, 1}) {
        Visits all;
        all.sign = sign;
        std::vector<int> expected;
        preOrder(tree, sign < 0, expected);
        EXPECT_EQ(walk(all, 4), nullptr);
        EXPECT_EQ(all.seen, expected);

        Visits some;
        some.sign = sign;
        some.stopAt = expected[kCount / 2];
        EXPECT_EQ(walk(some, 4), &values[some.stopAt - 1]);
        EXPECT_EQ(some.seen, std::vector<int>(expected.begin(), expected.begin() + kCount / 2 + 1));
    }
}

TEST_F(FilledTree, DeletingANodeWithTwoChildrenMovesItsSuccessorsDataIntoIt)
{
    RedBlackTreeNode *root = tree;
    ASSERT_TRUE(root->left != nullptr && root->right != nullptr);
    const RedBlackTreeNode *successor = root->right;
    while (successor->left != nullptr)
        successor = successor->left;
    void *successorData = successor->data;
    int key = *static_cast<int *>(root->data);
    ASSERT_EQ(SMRedBlackTreeDataDelete(&tree, &key, compareInts), 0);

    std::vector<void *> expected;
    for (int &value : values)
        if (value != key)
            expected.push_back(&value);
    EXPECT_TRUE(holds(tree, expected));
    const RedBlackTreeNode *holder = tree;
    while (holder != nullptr && holder->data != successorData)
        holder = compareInts(successorData, holder->data) < 0 ? holder->left : holder->right;
    EXPECT_EQ(holder, root) << "the matched node stays and holds its successor's data";
}

TEST_F(FilledTree, DeletingTheWholeTreeReleasesChildrenFirstRightBeforeLeft)
{
    std::vector<int> expected;
    postOrderRightFirst(tree, expected);
    Visits released;
    SMRedBlackTreeDelete(&tree, &released, release);
    EXPECT_EQ(tree, nullptr);
    EXPECT_EQ(released.seen, expected);
    EXPECT_EQ(released.seen.size(), static_cast<size_t>(kCount));
}

// Exhausting memory needs an address-space limit that the allocator meets: not so under
// the sanitizers' allocators, nor under a user-mode emulator that ignores the limit.
TEST(RedBlackTree, InsertReportsExhaustedMemoryAndKeepsTheTree)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizer allocators do not fail under an address-space limit";
#endif
    constexpr int kNotEnforced = 77;
    const int result = zksupt::test::runInChild([] {
        std::vector<int> keys(1 << 20);
        std::iota(keys.begin(), keys.end(), 0);
        std::vector<void *> inserted;
        inserted.reserve(keys.size());
        rlimit limit{0, RLIM_INFINITY};
        if (setrlimit(RLIMIT_AS, &limit) != 0)
            return kNotEnforced;
        if (void *probe = std::malloc(64 << 20)) {
            std::free(probe);
            return kNotEnforced;
        }
        RedBlackTree tree = nullptr;
        for (int &key : keys) {
            const int32_t status = SMRedBlackTreeDataInsert(&tree, &key, &key, compareInts);
            if (status == 0x110) {
                limit.rlim_cur = RLIM_INFINITY;  // the check itself allocates
                setrlimit(RLIMIT_AS, &limit);
                return holds(tree, inserted) ? 0 : 2;
            }
            if (status != 0)
                return 1;
            inserted.push_back(&key);
        }
        return 3;
    });
    if (result == kNotEnforced)
        GTEST_SKIP() << "the address-space limit is not enforced here";
    EXPECT_EQ(result, 0);
}

}  // namespace
