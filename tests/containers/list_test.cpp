// The singly and doubly linked lists, run through the same script of steps;
// after each step the list is read back along every link, prev links and both
// ends included.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <tuple>
#include <vector>

#include <zksupt/zksupt.h>

namespace {

// The functions of one family under common names.
#define LIST_FAMILY(Name, P)                                                                                           \
    struct Name {                                                                                                      \
        using List = P##List;                                                                                          \
        using Entry = P##ListEntry;                                                                                    \
        static constexpr auto alloc = SM##P##ListAlloc;                                                                \
        static constexpr auto entryAlloc = SM##P##ListEntryAlloc;                                                      \
        static constexpr auto freeList = SM##P##ListFree, init = SM##P##ListInitNoAlloc;                               \
        static constexpr auto entryFree = SM##P##ListEntryFree, entryInit = SM##P##ListEntryInitNoAlloc;               \
        static constexpr auto atHead = SM##P##ListInsertEntryAtHead, atTail = SM##P##ListInsertEntryAtTail;            \
        static constexpr auto removeHead = SM##P##ListRemoveEntryAtHead, removeTail = SM##P##ListRemoveEntryAtTail;    \
        static constexpr auto insert = SM##P##ListInsertEntry;                                                         \
        static constexpr auto walk = SM##P##ListWalkAtHead;                                                            \
        static constexpr auto replace = SM##P##ListReplaceEntry;                                                       \
        static constexpr auto isEmpty = SM##P##ListIsEmpty;                                                            \
    }
LIST_FAMILY(Singly, SL);
LIST_FAMILY(Doubly, DL);

template <class Family> class Lists : public ::testing::Test {
  protected:
    using Entry = typename Family::Entry;
    static int valueOf(const Entry *entry) { return *static_cast<const int *>(entry->data); }
    // Orders, finds and matches by value.
    static int32_t compare(void *key, Entry *entry) { return *static_cast<int *>(key) - valueOf(entry); }
    // The doubly linked unlink finds the predecessor itself.
    static void unlink(SLList *list, SLListEntry *prev, SLListEntry *entry) { SMSLListDeleteEntry(list, prev, entry); }
    static void unlink(DLList *list, DLListEntry *, DLListEntry *entry) { SMDLListDeleteEntry(list, entry); }
    Entry *make(int value)
    {
        made.emplace_back(Family::entryAlloc(sizeof value), Family::entryFree);
        std::memcpy(made.back()->data, &value, sizeof value);
        return made.back().get();
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
    std::vector<std::unique_ptr<Entry, void (*)(Entry *)>> made;
};

using Families = ::testing::Types<Singly, Doubly>;
TYPED_TEST_SUITE(Lists, Families);

// {step, value, status, the list after}. i: ordered insert; h, t: insert at head, at
// tail; r: replace the first entry holding value by a new one holding value + 10;
// u: unlink the first entry holding value; H, T: remove at head, at tail.
// clang-format off
const std::tuple<char, int, int32_t, std::vector<int>> kScript[] = {
    {'H', 0, 0, {}},                 {'T', 0, 0, {}},                  {'i', 5, 0, {5}},
    {'i', 1, 0, {1, 5}},             {'i', 3, 0, {1, 3, 5}},           {'i', 9, 0, {1, 3, 5, 9}},
    {'i', 3, 0x102, {1, 3, 5, 9}},   {'i', 0, 0, {0, 1, 3, 5, 9}},     {'h', 3, 0, {3, 0, 1, 3, 5, 9}},
    {'t', 1, 0, {3, 0, 1, 3, 5, 9, 1}},      {'r', 3, 0, {13, 0, 1, 3, 5, 9, 1}},
    {'r', 1, 0, {13, 0, 11, 3, 5, 9, 1}},    {'r', 1, 0, {13, 0, 11, 3, 5, 9, 11}},
    {'r', 7, 0, {13, 0, 11, 3, 5, 9, 11}},   {'u', 13, 0, {0, 11, 3, 5, 9, 11}},
    {'u', 3, 0, {0, 11, 5, 9, 11}},  {'u', 11, 0, {0, 5, 9, 11}},      {'u', 11, 0, {0, 5, 9}},
    {'H', 0, 0, {5, 9}},             {'T', 0, 0, {5}},                 {'T', 0, 0, {}},
    {'h', 4, 0, {4}},                {'H', 0, 0, {}},                  {'t', 6, 0, {6}},
    {'i', 2, 0, {2, 6}},             {'u', 6, 0, {2}},                 {'u', 2, 0, {}}};
// clang-format on

// Before each step a find from the head must give the first entry holding the
// value, one from the tail the last. The entry a step unlinks keeps its own next link.
TYPED_TEST(Lists, RunThroughTheScript)
{
    using F = TypeParam;
    using Link = typename F::Entry;
    auto *header = &this->list;
    for (const auto &[step, value, status, after] : kScript) {
        int key = value;
        Link *prev = nullptr, *first = header->head, *last = nullptr;
        while (first != nullptr && this->valueOf(first) != value)
            prev = first, first = first->next;
        for (Link *entry = first; entry != nullptr; entry = entry->next)
            last = this->valueOf(entry) == value ? entry : last;
        EXPECT_EQ(F::walk(header, &key, this->compare), first);
        if constexpr (std::is_same_v<Link, DLListEntry>) {
            EXPECT_EQ(SMDLListWalkAtTail(header, &key, this->compare), last);
        }
        Link *const leaving = step == 'H' ? header->head : step == 'T' ? header->tail : first;
        Link *const next = leaving != nullptr ? leaving->next : nullptr;
        Link *left = nullptr;  // what the step unlinked
        int32_t result = 0;
        if (step == 'i')
            result = F::insert(header, this->make(value), &key, this->compare);
        else if (step == 'h' || step == 't')
            (step == 'h' ? F::atHead : F::atTail)(header, this->make(value));
        else if (step == 'r')
            left = F::replace(header, this->make(value + 10), &key, this->compare);
        else if (step == 'u')
            this->unlink(header, prev, left = first);
        else
            left = (step == 'H' ? F::removeHead : F::removeTail)(header);
        EXPECT_EQ(result, status);
        EXPECT_EQ(left, std::strchr("iht", step) != nullptr ? nullptr : leaving) << step << value;
        EXPECT_TRUE(left == nullptr || left->next == next) << step << value;
        EXPECT_EQ(this->values(), after) << step << value;
        EXPECT_EQ(F::isEmpty(header), after.empty() ? 1 : 0);
    }
}

TYPED_TEST(Lists, EntriesCarryTheirDataAndNullArgumentsAreRefusedOrIgnored)
{
    using F = TypeParam;
    auto *bare = F::entryAlloc(0);
    auto *entry = F::entryAlloc(64);
    EXPECT_EQ(bare->data, nullptr);
    EXPECT_EQ(entry->data, entry + 1);
    std::memset(entry->data, 0x5A, 64);
    entry->data = bare;
    entry->next = entry;
    F::entryInit(entry);
    EXPECT_TRUE(entry->next == nullptr && entry->data == bare) << "the links are cleared, the data pointer kept";
    F::entryFree(entry);  // not bare, which it points to
    if (sizeof(void *) == 4) {
        EXPECT_EQ(F::entryAlloc(UINT32_MAX), nullptr) << "the block size must not wrap around";
    }
    auto *allocated = F::alloc();
    EXPECT_EQ(F::isEmpty(allocated), 1);
    F::atTail(allocated, bare);
    F::freeList(allocated);  // bare stays the caller's
    this->list = {bare, bare};
    F::init(&this->list);
    EXPECT_EQ(this->values(), std::vector<int>{});

    int key = 1;
    EXPECT_EQ(F::insert(nullptr, bare, &key, this->compare), 0x10F);
    EXPECT_EQ(F::insert(&this->list, nullptr, &key, this->compare), 0x10F);
    EXPECT_EQ(F::insert(&this->list, bare, nullptr, this->compare), 0x10F);
    EXPECT_EQ(F::insert(&this->list, bare, &key, nullptr), 0x10F);
    EXPECT_EQ(F::walk(&this->list, &key, nullptr), nullptr);
    EXPECT_EQ(F::replace(&this->list, bare, nullptr, this->compare), nullptr);
    EXPECT_EQ(F::removeHead(nullptr), nullptr);
    EXPECT_EQ(F::removeTail(nullptr), nullptr);
    EXPECT_EQ(F::isEmpty(nullptr), 1);
    F::atHead(nullptr, bare);
    F::atTail(&this->list, nullptr);
    this->unlink(nullptr, nullptr, bare);
    this->unlink(&this->list, nullptr, nullptr);
    F::freeList(nullptr);
    F::entryFree(nullptr);
    F::init(nullptr);
    F::entryInit(nullptr);
    EXPECT_EQ(this->values(), std::vector<int>{}) << "nothing was linked";
    F::entryFree(bare);
}

}  // namespace
