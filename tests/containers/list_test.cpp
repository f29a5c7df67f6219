// The singly and doubly linked lists, run through the same cases; every check
// also verifies the header and the links (prev links too where there are some).
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include <zksupt/zksupt.h>

namespace {

struct Singly {
    using List = SLList;
    using Entry = SLListEntry;
    static constexpr auto alloc = SMSLListAlloc;
    static constexpr auto init = SMSLListInitNoAlloc;
    static constexpr auto freeList = SMSLListFree;
    static constexpr auto entryAlloc = SMSLListEntryAlloc;
    static constexpr auto entryInit = SMSLListEntryInitNoAlloc;
    static constexpr auto entryFree = SMSLListEntryFree;
    static constexpr auto atHead = SMSLListInsertEntryAtHead;
    static constexpr auto atTail = SMSLListInsertEntryAtTail;
    static constexpr auto insert = SMSLListInsertEntry;
    static constexpr auto walk = SMSLListWalkAtHead;
    static constexpr auto replace = SMSLListReplaceEntry;
    static constexpr auto removeHead = SMSLListRemoveEntryAtHead;
    static constexpr auto removeTail = SMSLListRemoveEntryAtTail;
    static constexpr auto isEmpty = SMSLListIsEmpty;
    static void unlink(List *list, Entry *prev, Entry *entry) { SMSLListDeleteEntry(list, prev, entry); }
};

struct Doubly {
    using List = DLList;
    using Entry = DLListEntry;
    static constexpr auto alloc = SMDLListAlloc;
    static constexpr auto init = SMDLListInitNoAlloc;
    static constexpr auto freeList = SMDLListFree;
    static constexpr auto entryAlloc = SMDLListEntryAlloc;
    static constexpr auto entryInit = SMDLListEntryInitNoAlloc;
    static constexpr auto entryFree = SMDLListEntryFree;
    static constexpr auto atHead = SMDLListInsertEntryAtHead;
    static constexpr auto atTail = SMDLListInsertEntryAtTail;
    static constexpr auto insert = SMDLListInsertEntry;
    static constexpr auto walk = SMDLListWalkAtHead;
    static constexpr auto replace = SMDLListReplaceEntry;
    static constexpr auto removeHead = SMDLListRemoveEntryAtHead;
    static constexpr auto removeTail = SMDLListRemoveEntryAtTail;
    static constexpr auto isEmpty = SMDLListIsEmpty;
    static void unlink(List *list, Entry *, Entry *entry) { SMDLListDeleteEntry(list, entry); }
};

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

// Counts its calls; matches the value in target.
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
    using List = typename Family::List;
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

    // The values from head to tail, after checking both ends and every link.
    std::vector<int> values()
    {
        std::vector<int> seen;
        EXPECT_EQ(list.head == nullptr, list.tail == nullptr);
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

    void fill(std::initializer_list<int> order)
    {
        for (int value : order)
            Family::atTail(&list, make(value));
    }

    List list{};
    std::vector<Entry *> made;
};

using Families = ::testing::Types<Singly, Doubly>;
TYPED_TEST_SUITE(Lists, Families);

TYPED_TEST(Lists, OrderedInsertKeepsAscendingOrderAndRefusesEqualKeys)
{
    using F = TypeParam;
    auto compare = compareValue<typename F::Entry>;
    int keys[] = {5, 1, 3, 9, 0};
    for (int &key : keys)
        ASSERT_EQ(F::insert(&this->list, this->make(key), &key, compare), 0);
    EXPECT_EQ(this->values(), (std::vector<int>{0, 1, 3, 5, 9}));

    int three = 3;
    auto *extra = this->make(3);
    EXPECT_EQ(F::insert(&this->list, extra, &three, compare), 0x102);
    EXPECT_EQ(F::insert(nullptr, extra, &three, compare), 0x10F);
    EXPECT_EQ(F::insert(&this->list, nullptr, &three, compare), 0x10F);
    EXPECT_EQ(F::insert(&this->list, extra, nullptr, compare), 0x10F);
    EXPECT_EQ(F::insert(&this->list, extra, &three, nullptr), 0x10F);
    EXPECT_EQ(this->values(), (std::vector<int>{0, 1, 3, 5, 9}));
}

TYPED_TEST(Lists, EndsAreLinkedAndRemovedInPlace)
{
    using F = TypeParam;
    EXPECT_EQ(F::isEmpty(&this->list), 1);
    EXPECT_EQ(F::isEmpty(nullptr), 1);
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
    EXPECT_EQ(valueOf(head), 1);
    EXPECT_EQ(head->next, second) << "the removed entry keeps its link";
    EXPECT_EQ(valueOf(F::removeTail(&this->list)), 3);
    EXPECT_EQ(this->values(), (std::vector<int>{2}));
    EXPECT_EQ(valueOf(F::removeTail(&this->list)), 2);
    EXPECT_EQ(this->values(), std::vector<int>{});

    this->fill({4, 5});
    EXPECT_EQ(valueOf(F::removeHead(&this->list)), 4);
    EXPECT_EQ(valueOf(F::removeHead(&this->list)), 5);
    EXPECT_EQ(this->values(), std::vector<int>{});
}

TYPED_TEST(Lists, UnlinkingRepointsNeighboursAndEnds)
{
    using F = TypeParam;
    this->fill({1, 2, 3, 4});
    auto *first = this->list.head;
    auto *second = first->next;
    auto *third = second->next;
    auto *fourth = third->next;
    F::unlink(&this->list, second, third);
    EXPECT_EQ(this->values(), (std::vector<int>{1, 2, 4}));
    EXPECT_EQ(third->next, fourth) << "the unlinked entry keeps its link";
    F::unlink(&this->list, second, fourth);
    EXPECT_EQ(this->values(), (std::vector<int>{1, 2}));
    F::unlink(&this->list, nullptr, first);
    EXPECT_EQ(this->values(), (std::vector<int>{2}));
    F::unlink(nullptr, nullptr, second);
    F::unlink(&this->list, nullptr, nullptr);
    F::unlink(&this->list, nullptr, second);
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
    EXPECT_EQ(F::walk(&this->list, nullptr, probe<Link>), nullptr);
    EXPECT_EQ(F::walk(&this->list, &first, nullptr), nullptr);

    auto compare = compareValue<Link>;
    int two = 2, three = 3, missing = 8;
    Link *oldTwo = this->list.head->next;
    Link *oldThree = oldTwo->next;
    EXPECT_EQ(F::replace(&this->list, this->make(20), &two, compare), oldTwo);
    EXPECT_EQ(oldTwo->next, oldThree) << "the replaced entry keeps its link";
    EXPECT_EQ(F::replace(&this->list, this->make(30), &three, compare), oldThree);
    EXPECT_EQ(this->values(), (std::vector<int>{1, 20, 30}));
    EXPECT_EQ(F::replace(&this->list, this->make(80), &missing, compare), nullptr);
    EXPECT_EQ(F::replace(&this->list, nullptr, &missing, compare), nullptr);
    EXPECT_EQ(F::replace(&this->list, this->made[0], nullptr, compare), nullptr);
    EXPECT_EQ(this->values(), (std::vector<int>{1, 20, 30}));
}

TYPED_TEST(Lists, EntriesCarryTheirDataAreaAndHeadersOwnNothing)
{
    using F = TypeParam;
    auto *bare = F::entryAlloc(0);
    ASSERT_NE(bare, nullptr);
    EXPECT_EQ(bare->data, nullptr);
    F::entryFree(bare);
    auto *entry = F::entryAlloc(64);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->data, entry + 1);
    std::memset(entry->data, 0x5A, 64);
    int outside = 0;
    entry->data = &outside;
    entry->next = entry;
    F::entryInit(entry);
    EXPECT_EQ(entry->next, nullptr);
    EXPECT_EQ(entry->data, &outside);
    F::entryFree(entry);  // not the caller's int
    F::entryFree(nullptr);
    if (sizeof(void *) == 4) {
        EXPECT_EQ(F::entryAlloc(UINT32_MAX), nullptr) << "the block size must not wrap around";
    }

    auto *allocated = F::alloc();
    ASSERT_NE(allocated, nullptr);
    EXPECT_EQ(F::isEmpty(allocated), 1);
    F::atTail(allocated, this->make(1));
    F::freeList(allocated);  // the entry stays the caller's
    F::freeList(nullptr);
    this->fill({1});
    F::init(&this->list);
    F::init(nullptr);
    EXPECT_EQ(this->values(), std::vector<int>{});
}

TEST(DoublyLinkedList, WalksFromTheTailAlongThePrevLinks)
{
    DLList list{};
    DLListEntry entries[3]{};
    int values[3] = {1, 2, 1};
    for (int i = 0; i < 3; ++i) {
        entries[i].data = &values[i];
        SMDLListInsertEntryAtTail(&list, &entries[i]);
    }
    Probe one{1}, none{9};
    EXPECT_EQ(SMDLListWalkAtTail(&list, &one, probe<DLListEntry>), &entries[2]);
    EXPECT_EQ(one.calls, 1);
    EXPECT_EQ(SMDLListWalkAtTail(&list, &none, probe<DLListEntry>), nullptr);
    EXPECT_EQ(none.calls, 3);
    EXPECT_EQ(SMDLListWalkAtTail(nullptr, &one, probe<DLListEntry>), nullptr);
    SMDLListDeleteEntry(&list, &entries[2]);
    EXPECT_EQ(SMDLListWalkAtTail(&list, &one, probe<DLListEntry>), &entries[0]);
}

}  // namespace
