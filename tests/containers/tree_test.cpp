// The red-black tree, checked node by node: links, colours, black heights and
// the exact data pointers in order, against a std::map model.
#include <gtest/gtest.h>

#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include <zksupt/zksupt.h>

#include "support/child.h"

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
// problem receives the first broken rule.
int checkNodes(const RedBlackTreeNode *node, const RedBlackTreeNode *parent, std::vector<void *> &data,
               std::string &problem)
{
    if (node == nullptr)
        return 1;
    if (node->parent != parent)
        problem = "wrong parent link";
    else if (node->color > 1 || (node->color == 1 && parent != nullptr && parent->color == 1))
        problem = "a colour that is not black or red, or a red child of a red node";
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
        std::vector<void *> expected;
        for (const auto &entry : model)
            expected.push_back(entry.second);
        ASSERT_TRUE(holds(tree, expected)) << "after step " << step;
    }
    SMRedBlackTreeDelete(&tree, nullptr, nullptr);
    EXPECT_EQ(tree, nullptr);
}

TEST(RedBlackTree, StatusesAndNullArguments)
{
    int one = 1, otherOne = 1, two = 2;
    RedBlackTree tree = nullptr;
    EXPECT_EQ(SMRedBlackTreeDataDelete(&tree, &one, compareInts), 0x100);
    EXPECT_EQ(SMRedBlackTreeIsEmpty(tree), 1);
    ASSERT_EQ(SMRedBlackTreeDataInsert(&tree, &one, &one, compareInts), 0);
    EXPECT_EQ(SMRedBlackTreeIsEmpty(tree), 0);
    EXPECT_EQ(SMRedBlackTreeDataInsert(&tree, &otherOne, &otherOne, compareInts), 0x102);
    EXPECT_EQ(SMRedBlackTreeDataReplace(&tree, &two, &two, compareInts), nullptr);
    EXPECT_EQ(SMRedBlackTreeDataDelete(&tree, &two, compareInts), 0x100);
    EXPECT_TRUE(holds(tree, {&one})) << "refusals change nothing";

    EXPECT_EQ(SMRedBlackTreeDataInsert(nullptr, &two, &two, compareInts), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataInsert(&tree, nullptr, &two, compareInts), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataInsert(&tree, &two, nullptr, compareInts), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataInsert(&tree, &two, &two, nullptr), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataDelete(nullptr, &one, compareInts), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataDelete(&tree, nullptr, compareInts), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataDelete(&tree, &one, nullptr), 0x10F);
    EXPECT_EQ(SMRedBlackTreeDataReplace(nullptr, &otherOne, &one, compareInts), nullptr);
    EXPECT_EQ(SMRedBlackTreeDataReplace(&tree, nullptr, &one, compareInts), nullptr);
    SMRedBlackTreeAttach(nullptr);
    SMRedBlackTreeDetach(nullptr);
    SMRedBlackTreeDelete(nullptr, nullptr, nullptr);
    EXPECT_EQ(SMRedBlackTreeIsEmpty(nullptr), 1);

    EXPECT_EQ(SMRedBlackTreeDataReplace(&tree, &otherOne, &one, compareInts), &one);
    EXPECT_EQ(SMRedBlackTreeDataDelete(&tree, &one, compareInts), 0);
    EXPECT_EQ(tree, nullptr);
}

// Walk and release callbacks record what they see and stop at stopAt.
struct Visits {
    explicit Visits(int stopValue = -1, int32_t otherwise = 1) : stopAt(stopValue), sign(otherwise) {}
    int stopAt;
    int32_t sign;  // what the callback returns elsewhere
    std::vector<int> seen;
};

int32_t visit(void *context, void *data)
{
    auto &visits = *static_cast<Visits *>(context);
    visits.seen.push_back(valueOf(data));
    return valueOf(data) == visits.stopAt ? 0 : visits.sign;
}

void release(void *context, void *data)
{
    visit(context, data);
}

// The values by the shape: the node before (or after) both subtrees, one side first.
void listNodes(const RedBlackTreeNode *node, bool leftFirst, bool nodeLast, std::vector<int> &out)
{
    if (node == nullptr)
        return;
    if (!nodeLast)
        out.push_back(valueOf(node->data));
    listNodes(leftFirst ? node->left : node->right, leftFirst, nodeLast, out);
    listNodes(leftFirst ? node->right : node->left, leftFirst, nodeLast, out);
    if (nodeLast)
        out.push_back(valueOf(node->data));
}

int height(const RedBlackTreeNode *node)
{
    return node == nullptr ? 0 : 1 + std::max(height(node->left), height(node->right));
}

class FilledTree : public ::testing::Test {
  protected:
    static constexpr int kCount = 1000;
    void SetUp() override
    {
        std::iota(values.begin(), values.end(), 1);
        for (int &value : values)
            ASSERT_EQ(SMRedBlackTreeDataInsert(&tree, &value, &value, compareInts), 0);
    }
    void TearDown() override { SMRedBlackTreeDelete(&tree, nullptr, nullptr); }
    void *walk(Visits &visits, uint32_t order) { return SMRedBlackTreeDataWalk(tree, &visits, visit, order); }
    std::vector<int> values = std::vector<int>(kCount);
    RedBlackTree tree = nullptr;
};

TEST_F(FilledTree, AscendingInsertsStayBalancedAndWalkInEveryOrder)
{
    EXPECT_LE(height(tree), 2 * std::log2(kCount + 1));
    Visits ascending, descending, rootOnly{valueOf(tree->data)}, stopped{10}, beyond;
    EXPECT_EQ(walk(ascending, 1), nullptr);
    EXPECT_EQ(ascending.seen, values);
    EXPECT_EQ(walk(descending, 2), nullptr);
    EXPECT_EQ(descending.seen, std::vector<int>(values.rbegin(), values.rend()));
    EXPECT_EQ(walk(rootOnly, 0), tree->data);
    EXPECT_EQ(rootOnly.seen.size(), 1u);
    EXPECT_EQ(walk(stopped, 1), &values[9]);
    EXPECT_EQ(stopped.seen.size(), 10u);
    EXPECT_EQ(walk(beyond, 5), nullptr);
    EXPECT_TRUE(beyond.seen.empty());
    EXPECT_EQ(SMRedBlackTreeDataWalk(tree, nullptr, visit, 1), nullptr);
    EXPECT_EQ(SMRedBlackTreeDataWalk(tree, &beyond, nullptr, 1), nullptr);
    EXPECT_EQ(SMRedBlackTreeDataWalk(nullptr, &beyond, visit, 1), nullptr);

    for (int key : {1, 500, 1000, 0, 1001}) {
        const bool inside = key >= 1 && key <= kCount;
        EXPECT_EQ(SMRedBlackTreeDataWalk(tree, &key, compareInts, 3), inside ? &values[key - 1] : nullptr);
    }
    // Order 4 without a match visits every node, the sign choosing the subtree to search first.
    for (const int32_t sign : {-1, 1}) {
        std::vector<int> expected;
        listNodes(tree, sign < 0, false, expected);
        Visits all{-1, sign}, some{expected[kCount / 2], sign};
        EXPECT_EQ(walk(all, 4), nullptr);
        EXPECT_EQ(all.seen, expected);
        EXPECT_EQ(walk(some, 4), &values[some.stopAt - 1]);
        EXPECT_EQ(some.seen, std::vector<int>(expected.begin(), expected.begin() + kCount / 2 + 1));
    }
}

TEST_F(FilledTree, DeletingANodeWithTwoChildrenMovesItsSuccessorsDataIntoIt)
{
    RedBlackTreeNode *root = tree;  // it has two children
    int key = valueOf(root->data);
    ASSERT_EQ(SMRedBlackTreeDataDelete(&tree, &key, compareInts), 0);
    std::vector<void *> expected;
    for (int &value : values)
        if (value != key)
            expected.push_back(&value);
    EXPECT_TRUE(holds(tree, expected));
    // Freed instead, the node would trip the address sanitizer here.
    EXPECT_EQ(root->data, &values[key]) << "the matched node stays and holds its successor's data";
}

TEST_F(FilledTree, DeletingTheWholeTreeReleasesChildrenFirstRightBeforeLeft)
{
    std::vector<int> expected;
    listNodes(tree, false, true, expected);
    Visits released;
    SMRedBlackTreeDelete(&tree, &released, release);
    EXPECT_EQ(tree, nullptr);
    EXPECT_EQ(released.seen, expected);
}

// Exhausting memory needs an address-space limit that the allocator meets: not so
// under the sanitizers' allocators or valgrind's, nor under a user-mode emulator
// that ignores the limit.
TEST(RedBlackTree, InsertReportsExhaustedMemoryAndKeepsTheTree)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizer allocators do not fail under an address-space limit";
#endif
    const char *preload = std::getenv("LD_PRELOAD");
    if (preload != nullptr && std::strstr(preload, "vgpreload") != nullptr)
        GTEST_SKIP() << "valgrind needs address space of its own";
    constexpr int kNotEnforced = 77;
    const int result = zksupt::test::runInChild([] {
        std::vector<int> keys(1 << 20);
        std::iota(keys.begin(), keys.end(), 0);
        rlimit limit{0, RLIM_INFINITY};
        if (setrlimit(RLIMIT_AS, &limit) != 0)
            return kNotEnforced;
        if (void *probe = std::malloc(64 << 20)) {
            std::free(probe);
            return kNotEnforced;
        }
        RedBlackTree tree = nullptr;
        for (size_t count = 0; count < keys.size(); ++count) {
            const int32_t status = SMRedBlackTreeDataInsert(&tree, &keys[count], &keys[count], compareInts);
            if (status == 0x110) {
                limit.rlim_cur = RLIM_INFINITY;  // the check itself allocates
                setrlimit(RLIMIT_AS, &limit);
                std::vector<void *> inserted(count);
                std::transform(keys.begin(), keys.begin() + count, inserted.begin(), [](int &key) { return &key; });
                return holds(tree, inserted) ? 0 : 2;
            }
            if (status != 0)
                return 1;
        }
        return 3;
    });
    if (result == kNotEnforced)
        GTEST_SKIP() << "the address-space limit is not enforced here";
    EXPECT_EQ(result, 0);
}

}  // namespace
