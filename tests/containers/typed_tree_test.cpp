// The typed tree that the library's own tables use: it owns its items.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "containers/typed_tree.h"

namespace {

int alive = 0;

struct Item {
    Item(std::string_view itsName, int itsValue) : name(itsName), value(itsValue) { ++alive; }
    ~Item() { --alive; }
    std::string name;
    int value;
};

struct ByName {
    int operator()(std::string_view key, const Item &item) const { return key.compare(item.name); }
};

using Items = zksupt::containers::Tree<Item, std::string_view, ByName>;

TEST(TypedTree, OwnsItsItemsAndFindsThemByKey)
{
    {
        Items items;
        for (std::string_view name : {"mutex", "event", "lock", "shm"})
            EXPECT_EQ(items.emplace(name, name, static_cast<int>(name.size())).status, 0);
        EXPECT_EQ(items.emplace("lock", "lock", 0).status, 0x102);
        EXPECT_EQ(items.erase("event"), 0);
        EXPECT_EQ(items.erase("event"), 0x100);
        EXPECT_EQ(alive, 3) << "refused and erased items are destroyed";
        EXPECT_EQ(items.find("none"), nullptr);
        std::vector<std::string> names;
        items.forEach([&names](Item &item) { names.push_back(item.name); });
        EXPECT_EQ(names, (std::vector<std::string>{"lock", "mutex", "shm"}));
        EXPECT_EQ(items.findIf([](Item &item) { return item.value == 5; })->name, "mutex");
        Items moved(std::move(items));
        EXPECT_TRUE(items.empty());
        EXPECT_EQ(items.emplace("left", "left", 0).status, 0);
        items = std::move(moved);
        EXPECT_EQ(alive, 3) << "the assigned tree drops what it held";
        EXPECT_EQ(items.find("shm")->value, 3);
    }
    EXPECT_EQ(alive, 0) << "the destructor frees every item";
}

}  // namespace
