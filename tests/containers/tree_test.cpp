// The red-black tree checked node by node against a std::map model; then the typed tree.
#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <numeric>
#include <random>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include <zksupt/zksupt.h>

#include "containers/tree.h"
#include "containers/typed_tree.h"

namespace {

const auto valueOf = [](const void *data) { return *static_cast<const int *>(data); };
const auto compareInts = [](void *key, void *data) -> int32_t { return valueOf(key) - valueOf(data); };

// Appends the data below node in order and returns its black height, or -1 when a
// parent link or a colour is wrong, a red node is the root or has a red child, or
// black heights differ.
int checkNodes(const RedBlackTreeNode *node, const RedBlackTreeNode *parent, std::vector<void *> &data)
{
    if (node == nullptr)
        return 1;
    const int left = checkNodes(node->left, node, data);
    data.push_back(node->data);
    const int right = checkNodes(node->right, node, data);
    const bool red = node->color == 1, broken = node->parent != parent || node->color > 1;
    if (broken || (red && (parent == nullptr || parent->color == 1)) || left < 0 || left != right)
        return -1;
    return left + (red ? 0 : 1);
}

// Every refusal, replace and two-children delete is checked on the way.
TEST(RedBlackTree, RandomInsertsReplacesAndDeletesKeepTheInvariants)
{
    constexpr int kKeys = 500;
    std::vector<int> values(2 * kKeys);  // two distinct data pointers per key
    for (int at = 0; at < 2 * kKeys; ++at)
        values[at] = at % kKeys;
    std::map<int, int *> model;
    RedBlackTree tree;
    SMRedBlackTreeAttach(&tree);
    std::mt19937 random(20261121);
    for (int step = 0; step < 6000; ++step) {
        int key = static_cast<int>(random() % kKeys);
        const auto found = model.find(key);
        const bool present = found != model.end();
        int *fresh = present && found->second == &values[key] ? &values[key + kKeys] : &values[key];
        const unsigned operation = random() % 10;
        if (operation < 5) {
            ASSERT_EQ(SMRedBlackTreeDataInsert(&tree, fresh, &key, compareInts),
                      present ? SM_STATUS_DUPLICATE : SM_STATUS_SUCCESS);
            model.emplace(key, fresh);
        } else if (operation < 7) {
            ASSERT_EQ(SMRedBlackTreeDataReplace(&tree, fresh, &key, compareInts), present ? found->second : nullptr);
            if (present)
                found->second = fresh;
        } else {
            const RedBlackTreeNode *matched = tree;
            while (matched != nullptr && valueOf(matched->data) != key)
                matched = valueOf(matched->data) > key ? matched->left : matched->right;
            // A node with two children stays and takes its successor's data.
            const bool twoChildren = matched != nullptr && matched->left != nullptr && matched->right != nullptr;
            ASSERT_EQ(SMRedBlackTreeDataDelete(&tree, &key, compareInts),
                      present ? SM_STATUS_SUCCESS : SM_STATUS_NOT_FOUND);
            ASSERT_TRUE(!twoChildren || matched->data == std::next(found)->second) << "not the successor's data";
            model.erase(key);
        }
        std::vector<void *> data, expected;
        ASSERT_GT(checkNodes(tree, nullptr, data), 0) << "a red-black rule is broken after step " << step;
        for (const auto &entry : model)
            expected.push_back(entry.second);
        ASSERT_EQ(data, expected) << "in-order data after step " << step;
    }
    SMRedBlackTreeDelete(&tree, nullptr, nullptr);
}

// A tree linked at once from sorted data, in storage of the caller's, at
// every size up to a few full levels: the red-black rules hold, the order
// is the data's, and inserts and detaches keep the rules. Nodes from the
// caller's storage come back through detachData and deleteTree, never freed.
TEST(RedBlackTree, LinkedAtOnceFromSortedDataTakesInsertsAndDetaches)
{
    namespace ct = zksupt::containers;
    std::vector<int> values(600);
    std::iota(values.begin(), values.end(), 0);
    for (uint32_t count = 0; count <= 130; count += count < 70 ? 1 : 29) {
        std::vector<RedBlackTreeNode> nodes(count);
        std::vector<void *> sorted;
        for (uint32_t i = 0; i < count; ++i)
            sorted.push_back(nodes[i].data = &values[2 * i]);  // even values, so that odd ones go between
        const auto ours = [&](RedBlackTreeNode *node) { return node >= nodes.data() && node < nodes.data() + count; };
        RedBlackTree tree = ct::linkSorted(nodes.data(), count);
        std::vector<void *> data, visited;
        ASSERT_GT(checkNodes(tree, nullptr, data), 0) << count << " nodes";
        ASSERT_EQ(data, sorted);
        for (ct::InOrder each(tree); void *value = each.next();)
            visited.push_back(value);
        ASSERT_EQ(visited, sorted);

        std::map<int, void *> model;
        for (void *value : sorted)
            model.emplace(valueOf(value), value);
        std::mt19937 random(count);
        for (int step = 0; step < 40; ++step) {
            int key = static_cast<int>(random() % (2 * count + 2));
            const bool present = model.count(key) != 0;
            void *removed = nullptr;
            if (random() % 2 == 0) {
                ASSERT_EQ(SMRedBlackTreeDataInsert(&tree, &values[key], &key, compareInts),
                          present ? SM_STATUS_DUPLICATE : SM_STATUS_SUCCESS);
                model.emplace(key, &values[key]);
            } else {
                RedBlackTreeNode *left = ct::detachData(&tree, &key, compareInts, &removed);
                ASSERT_EQ(left != nullptr, present);
                ASSERT_EQ(removed, present ? &values[key] : nullptr);
                if (left != nullptr && !ours(left))
                    std::free(left);
                model.erase(key);
            }
            data.clear();
            ASSERT_GT(checkNodes(tree, nullptr, data), 0) << count << " nodes, step " << step;
            ASSERT_EQ(data.size(), model.size());
        }
        struct Released {
            std::size_t data = 0, ourNodes = 0;
            decltype(ours) isOurs;
        } released{0, 0, ours};
        ct::deleteTree(
            &tree, &released, [](void *context, void *) { ++static_cast<Released *>(context)->data; },
            [](void *context, RedBlackTreeNode *node) {
                auto &r = *static_cast<Released *>(context);
                if (r.isOurs(node))
                    ++r.ourNodes;
                else
                    std::free(node);
            });
        EXPECT_EQ(released.data, data.size());
        EXPECT_LE(released.ourNodes, std::size_t{count});
        EXPECT_EQ(tree, nullptr);
    }
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
TEST(RedBlackTree, WalksInEveryOrderDeletesChildrenFirstAndRefusesNullArguments)
{
    std::vector<int> up(1000), left, right;
    std::iota(up.begin(), up.end(), 1);
    RedBlackTreeNode foreign{};
    RedBlackTree tree = &foreign;
    SMRedBlackTreeDetach(&tree);  // frees nothing: the node is not the tree's
    for (int &value : up)
        ASSERT_EQ(SMRedBlackTreeDataInsert(&tree, &value, &value, compareInts), SM_STATUS_SUCCESS);
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
    for (int key : {1, 500, 1000, 0, 1001})  // order 3: a guided search, the callback comparing
        EXPECT_EQ(SMRedBlackTreeDataWalk(tree, &key, compareInts, 3), key >= 1 && key <= 1000 ? &up[key - 1] : nullptr);
    for (const auto &[order, sign, stopAt, seen] : walks) {
        Visits visits{stopAt, sign, {}};
        EXPECT_EQ(SMRedBlackTreeDataWalk(tree, &visits, visit, order), stopAt > 0 ? &up[stopAt - 1] : nullptr);
        EXPECT_EQ(visits.seen, seen) << "order " << order << ", stopping at " << stopAt;
    }
    Visits released;
    SMRedBlackTreeDelete(&tree, &released, [](void *context, void *data) { visit(context, data); });
    EXPECT_EQ(released.seen, std::vector<int>(left.rbegin(), left.rend()));

    // The tree is empty again; refusals and null arguments change nothing.
    int *key = &up[0];
    EXPECT_EQ(SMRedBlackTreeIsEmpty(tree), 1);
    EXPECT_EQ(SMRedBlackTreeDataWalk(tree, key, compareInts, 0), nullptr);
    EXPECT_EQ(SMRedBlackTreeDataDelete(&tree, key, compareInts), SM_STATUS_NOT_FOUND);
    EXPECT_EQ(SMRedBlackTreeDataInsert(nullptr, key, key, compareInts), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMRedBlackTreeDataDelete(nullptr, key, compareInts), SM_STATUS_INVALID_PARAMETER);
}

// The typed tree that the library's own tables use: it owns its items.
int alive = 0;

struct Item {
    Item(std::string_view itsName, int itsValue) : name(itsName), value(itsValue) { ++alive; }
    ~Item() { --alive; }
    std::string name;
    int value;
};

using ByName = decltype([](std::string_view key, const Item &item) { return key.compare(item.name); });
using Items = zksupt::containers::Tree<Item, std::string_view, ByName>;

TEST(TypedTree, OwnsItsItemsAndFindsThemByKey)
{
    {
        Items items;
        for (std::string_view name : {"mutex", "event", "lock", "shm"})
            EXPECT_EQ(items.emplace(name, name, static_cast<int>(name.size())).status, SM_STATUS_SUCCESS);
        EXPECT_EQ(items.emplace("lock", "lock", 0).status, SM_STATUS_DUPLICATE);
        EXPECT_EQ(items.erase("event"), SM_STATUS_SUCCESS);
        EXPECT_EQ(items.erase("event"), SM_STATUS_NOT_FOUND);
        EXPECT_EQ(alive, 3) << "refused and erased items are destroyed";
        std::vector<std::string> names;
        items.forEach([&names](Item &item) { names.push_back(item.name); });
        EXPECT_EQ(names, (std::vector<std::string>{"lock", "mutex", "shm"}));
        Items moved(std::move(items));
        EXPECT_EQ(moved.findIf([](Item &item) { return item.value == 5; })->name, "mutex");
        EXPECT_EQ(moved.find("shm")->value, 3);
    }
    EXPECT_EQ(alive, 0) << "the destructor frees every item";
}

}  // namespace
