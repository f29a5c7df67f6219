// The singly and doubly linked lists, run through the same cases; reading a
// list back also checks its ends and every link, prev links included.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include <zksupt/zksupt.h>

namespace {

// The functions of one family under common names.
#define LIST_FAMILY(Name, P)                                                                  \
    struct Name {                                                                             \
        using List = P##List;                                                                 \
        using Entry = P##ListEntry;                                                           \
        static constexpr auto alloc = SM##P##ListAlloc, freeList = SM##P##ListFree;           \
        static constexpr auto init = SM##P##ListInitNoAlloc;                                  \
        static constexpr auto entryInit = SM##P##ListEntryInitNoAlloc;                        \
        static constexpr auto entryAlloc = SM##P##ListEntryAlloc;                             \
        static constexpr auto entryFree = SM##P##ListEntryFree;                               \
        static constexpr auto atHead = SM##P##ListInsertEntryAtHead;                          \
        static constexpr auto atTail = SM##P##ListInsertEntryAtTail;                          \
        static constexpr auto insert = SM##P##ListInsertEntry;                                \
        static constexpr auto walk = SM##P##ListWalkAtHead;                                   \
        static constexpr auto replace = SM##P##ListReplaceEntry;                              \
        static constexpr auto removeHead = SM##P##ListRemoveEntryAtHead;                      \
        static constexpr auto removeTail = SM##P##ListRemoveEntryAtTail;                      \
        static constexpr auto isEmpty = SM##P##ListIsEmpty;                                   \
    }
LIST_FAMILY(Singly, SL);
LIST_FAMILY(Doubly, DL);

// The doubly linked unlink finds the predecessor itself.
void unlink(SLList *list, SLListEntry *prev, SLListEntry *entry)
{
    SMSLListDeleteEntry(list, prev, entry);
}
void unlink(DLList *list, DLListEntry *, DLListEntry *entry)
{
    SMDLListDeleteEntry(list, entry);
}

template <class Entry>
int valueOf(const Entry *entry)
{
    return *static_cast<const int *>(entry->data);
}

template <class Entry>
int32_t compareValue(void *key, Entry *entry)
{
    const int a = *static_cast<int *>(key);
    return (a > valueOf(entry)) - (a < valueOf(entry));
}

// A find callback that counts its calls and matches target.
struct Probe {
    int target;
    int calls = 0;
};

template <class Entry>
int32_t probe(void *context, Entry *entry)
{
    auto &probe = *static_cast<Probe *>(context);
    ++probe.calls;
    return valueOf(entry) == probe.target ? 0 : 1;
}

template <class Family>
class Lists : public ::testing::Test {
  protected:
    using Entry = typename Family::Entry;
    void TearDown() override
    {
        for (Entry *entry : made)
            Family::entryFree(entry);
    }
    Entry *make(int value)
    {
        Entry *entry = Family::entryAlloc(sizeof(int));
        std::memcpy(entry->data, &value, sizeof value);
        made.push_back(entry);
        return entry;
    }
    void fill(std::initializer_list<int> order)
    {
        for (int value : order)
            Family::atTail(&list, make(value));
    }
    // Head to tail; a broken link or end fails the test.
    std::vector<int> values()
    {
        std::vector<int> seen;
        Entry *prev = nullptr;
        for (Entry *entry = list.head; entry != nullptr && seen.size() <= made.size(); entry = entry->next) {
            if constexpr (std::is_same_v<Entry, DLListEntry>) {
                EXPECT_EQ(entry->prev, prev);
            }
            seen.push_back(valueOf(entry));
            prev = entry;
        }
        EXPECT_EQ(list.tail, prev);
        return seen;
    }
    typename Family::List list{};
    std::vector<Entry *> made;
};

using Families = ::testing::Types<Singly, Doubly>;
TYPED_TEST_SUITE(Lists, Families);

TYPED_TEST(Lists, OrderedInsertKeepsAscendingOrderAndRefusesEqualKeys)
{
    using F = TypeParam;
    auto compare = compareValue<typename F::Entry>;
    int keys[] = {5, 1, 3, 9, 0, 3};
    for (int &key : keys)
        EXPECT_EQ(F::insert(&this->list, this->make(key), &key, compare), &key == &keys[5] ? 0x102 : 0);
    EXPECT_EQ(this->values(), (std::vector<int>{0, 1, 3, 5, 9}));
    auto *extra = this->made[0];
    EXPECT_EQ(F::insert(nullptr, extra, &keys[0], compare), 0x10F);
    EXPECT_EQ(F::insert(&this->list, nullptr, &keys[0], compare), 0x10F);
    EXPECT_EQ(F::insert(&this->list, extra, nullptr, compare), 0x10F);
    EXPECT_EQ(F::insert(&this->list, extra, &keys[0], nullptr), 0x10F);
    EXPECT_EQ(this->values(), (std::vector<int>{0, 1, 3, 5, 9}));
}

TYPED_TEST(Lists, EndsAreLinkedAndRemovedInPlace)
{
    using F = TypeParam;
    EXPECT_EQ(F::removeHead(&this->list), nullptr);
    EXPECT_EQ(F::removeTail(&this->list), nullptr);
    F::atHead(&this->list, this->make(2));  // into an empty list: head and tail
    EXPECT_EQ(this->values(), (std::vector<int>{2}));
    F::atTail(&this->list, this->make(3));
    F::atHead(&this->list, this->make(1));
    F::atHead(nullptr, this->made[0]);
    F::atTail(&this->list, nullptr);
    EXPECT_EQ(this->values(), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(F::isEmpty(&this->list), 0);

    auto *second = this->list.head->next;
    auto *head = F::removeHead(&this->list);
    EXPECT_EQ(head->next, second) << "the removed entry keeps its link";
    EXPECT_EQ(valueOf(F::removeTail(&this->list)), 3);
    EXPECT_EQ(this->values(), (std::vector<int>{2}));
    EXPECT_EQ(valueOf(F::removeTail(&this->list)), 2);
    EXPECT_EQ(this->values(), std::vector<int>{});
    EXPECT_EQ(F::isEmpty(&this->list), 1);
    EXPECT_EQ(F::isEmpty(nullptr), 1);
    this->fill({4});
    EXPECT_EQ(valueOf(F::removeHead(&this->list)), 4);
    EXPECT_EQ(this->values(), std::vector<int>{});
}

TYPED_TEST(Lists, UnlinkingRepointsNeighboursAndEnds)
{
    this->fill({1, 2, 3, 4});
    auto *first = this->list.head;
    auto *second = first->next;
    auto *third = second->next;
    unlink(&this->list, second, third);
    EXPECT_EQ(this->values(), (std::vector<int>{1, 2, 4}));
    EXPECT_EQ(valueOf(third->next), 4) << "the unlinked entry keeps its link";
    unlink(&this->list, second, second->next);
    unlink(&this->list, nullptr, first);
    unlink(nullptr, nullptr, second);
    unlink(&this->list, nullptr, static_cast<decltype(first)>(nullptr));
    EXPECT_EQ(this->values(), (std::vector<int>{2}));
    unlink(&this->list, nullptr, second);
    EXPECT_EQ(this->values(), std::vector<int>{});
}

TYPED_TEST(Lists, FindAndReplaceTakeTheFirstMatchFromTheHead)
{
    using F = TypeParam;
    using Link = typename F::Entry;
    this->fill({1, 2, 3});
    Probe none{7}, first{1};
    EXPECT_EQ(F::walk(&this->list, &none, probe<Link>), nullptr);
    EXPECT_EQ(none.calls, 3);
    EXPECT_EQ(F::walk(&this->list, &first, probe<Link>), this->list.head);
    EXPECT_EQ(first.calls, 1);
    EXPECT_EQ(F::walk(&this->list, &first, nullptr), nullptr);
    if constexpr (std::is_same_v<Link, DLListEntry>) {
        Probe last{3}, behind{1};
        EXPECT_EQ(SMDLListWalkAtTail(&this->list, &last, probe<Link>), this->list.tail);
        EXPECT_EQ(SMDLListWalkAtTail(&this->list, &behind, probe<Link>), this->list.head);
        EXPECT_EQ(last.calls + behind.calls, 4) << "from the tail along the prev links";
        EXPECT_EQ(SMDLListWalkAtTail(nullptr, &last, probe<Link>), nullptr);
    }

    int two = 2, three = 3, missing = 8;
    Link *oldTwo = this->list.head->next;
    Link *oldThree = oldTwo->next;
    EXPECT_EQ(F::replace(&this->list, this->make(20), &two, compareValue<Link>), oldTwo);
    EXPECT_EQ(oldTwo->next, oldThree) << "the replaced entry keeps its link";
    EXPECT_EQ(F::replace(&this->list, this->make(30), &three, compareValue<Link>), oldThree);
    EXPECT_EQ(F::replace(&this->list, this->make(80), &missing, compareValue<Link>), nullptr);
    EXPECT_EQ(F::replace(&this->list, this->made[0], nullptr, compareValue<Link>), nullptr);
    EXPECT_EQ(this->values(), (std::vector<int>{1, 20, 30}));
}

TYPED_TEST(Lists, EntriesCarryTheirDataAreaAndHeadersOwnNothing)
{
    using F = TypeParam;
    auto *bare = F::entryAlloc(0);
    EXPECT_EQ(bare->data, nullptr);
    F::entryFree(bare);
    auto *entry = F::entryAlloc(64);
    EXPECT_EQ(entry->data, entry + 1);
    std::memset(entry->data, 0x5A, 64);
    int outside = 0;
    entry->data = &outside;
    entry->next = entry;
    F::entryInit(entry);
    EXPECT_TRUE(entry->next == nullptr && entry->data == &outside);
    F::entryFree(entry);  // not the caller's int
    F::entryFree(nullptr);
    if (sizeof(void *) == 4) {
        EXPECT_EQ(F::entryAlloc(UINT32_MAX), nullptr) << "the block size must not wrap around";
    }
    auto *allocated = F::alloc();
    EXPECT_EQ(F::isEmpty(allocated), 1);
    F::atTail(allocated, this->make(1));
    F::freeList(allocated);  // the entry stays the caller's
    F::freeList(nullptr);
    this->fill({1});
    F::init(&this->list);
    F::init(nullptr);
    EXPECT_EQ(this->list.head, nullptr);
}

}  // namespace
