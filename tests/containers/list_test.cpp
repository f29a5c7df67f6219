// Both linked lists run through one script, read back along every link after each step.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <tuple>
#include <type_traits>
#include <vector>

#include <zksupt/zksupt.h>

namespace {

// The functions of one family under common names.
#define LIST_FAMILY(Name, P)                                                                                           \
    struct Name {                                                                                                      \
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

// The header comes from the family's allocator and is freed before the entries,
// which it must leave alone.
template <class Family> class Lists : public ::testing::Test {
  protected:
    using Entry = std::remove_pointer_t<decltype(Family::entryAlloc(0))>;
    ~Lists() override { Family::freeList(header); }
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
    // The predecessor a doubly linked entry names; a singly linked one has no such link.
    static SLListEntry *prevOf(SLListEntry *, SLListEntry *prev) { return prev; }
    static DLListEntry *prevOf(DLListEntry *entry, DLListEntry *) { return entry->prev; }
    // Head to tail, -1 standing for an entry with a wrong prev link; a wrong tail fails the test.
    std::vector<int> values()
    {
        std::vector<int> seen;
        Entry *prev = nullptr;
        for (Entry *at = header->head; at != nullptr && seen.size() <= made.size(); prev = at, at = at->next)
            seen.push_back(prevOf(at, prev) == prev ? valueOf(at) : -1);
        EXPECT_EQ(header->tail, prev);
        return seen;
    }
    std::vector<std::unique_ptr<Entry, void (*)(Entry *)>> made;
    decltype(Family::alloc()) header = Family::alloc();
};

using Families = ::testing::Types<Singly, Doubly>;
TYPED_TEST_SUITE(Lists, Families);

// {step, value, the list after}. i: ordered insert; I: one refused for an equal key
// (DUPLICATE); h, t: insert at head, at tail; r: replace the first entry holding value by
// a new one holding value + 10; u: unlink the first entry holding value; H, T: remove
// at head, at tail; c: make the header empty again.
// clang-format off
const std::tuple<char, int, std::vector<int>> kScript[] = {
    {'H', 0, {}},              {'T', 0, {}},           {'i', 5, {5}},           {'i', 1, {1, 5}},
    {'i', 3, {1, 3, 5}},       {'i', 9, {1, 3, 5, 9}}, {'I', 3, {1, 3, 5, 9}},  {'i', 0, {0, 1, 3, 5, 9}},
    {'h', 3, {3, 0, 1, 3, 5, 9}},       {'t', 1, {3, 0, 1, 3, 5, 9, 1}},      {'r', 3, {13, 0, 1, 3, 5, 9, 1}},
    {'r', 1, {13, 0, 11, 3, 5, 9, 1}},  {'r', 1, {13, 0, 11, 3, 5, 9, 11}},   {'r', 7, {13, 0, 11, 3, 5, 9, 11}},
    {'u', 13, {0, 11, 3, 5, 9, 11}},    {'u', 3, {0, 11, 5, 9, 11}},          {'u', 11, {0, 5, 9, 11}},
    {'u', 11, {0, 5, 9}},      {'H', 0, {5, 9}},       {'T', 0, {5}},           {'T', 0, {}},
    {'h', 4, {4}},             {'H', 0, {}},           {'t', 6, {6}},           {'i', 2, {2, 6}},
    {'u', 6, {2}},             {'u', 2, {}},           {'t', 7, {7}},           {'i', 8, {7, 8}},   {'c', 0, {}}};
// clang-format on

// Before each step a find from the head must give the first entry holding the
// value, one from the tail the last. The entry a step unlinks keeps its own next link.
TYPED_TEST(Lists, RunThroughTheScript)
{
    using Link = typename TestFixture::Entry;
    auto *list = this->header;
    for (auto [step, key, after] : kScript) {
        Link *prev = nullptr, *first = list->head, *last = nullptr;
        while (first != nullptr && this->valueOf(first) != key)
            prev = first, first = first->next;
        for (Link *entry = first; entry != nullptr; entry = entry->next)
            last = this->valueOf(entry) == key ? entry : last;
        EXPECT_EQ(TypeParam::walk(list, &key, this->compare), first);
        if constexpr (std::is_same_v<Link, DLListEntry>) {
            EXPECT_EQ(SMDLListWalkAtTail(list, &key, this->compare), last);
        }
        Link *const leaving = step == 'H' ? list->head : step == 'T' ? list->tail : first;
        Link *const next = leaving != nullptr ? leaving->next : nullptr;
        Link *left = nullptr;  // what the step unlinked
        int32_t result = 0;
        if (step == 'i' || step == 'I')
            result = TypeParam::insert(list, this->make(key), &key, this->compare);
        else if (step == 'h' || step == 't')
            (step == 'h' ? TypeParam::atHead : TypeParam::atTail)(list, this->make(key));
        else if (step == 'r')
            left = TypeParam::replace(list, this->make(key + 10), &key, this->compare);
        else if (step == 'u')
            this->unlink(list, prev, left = first);
        else if (step == 'H' || step == 'T')
            left = (step == 'H' ? TypeParam::removeHead : TypeParam::removeTail)(list);
        else
            TypeParam::init(list);
        EXPECT_EQ(result, step == 'I' ? SM_STATUS_DUPLICATE : SM_STATUS_SUCCESS);
        EXPECT_EQ(left, std::strchr("iIhtc", step) != nullptr ? nullptr : leaving) << step << key;
        EXPECT_TRUE(left == nullptr || left->next == next) << step << key;
        EXPECT_EQ(this->values(), after) << step << key;
        EXPECT_EQ(TypeParam::isEmpty(list), after.empty() ? 1 : 0);
    }
}

TYPED_TEST(Lists, EntriesCarryTheirDataAreaAndNullArgumentsAreRefused)
{
    auto *bare = TypeParam::entryAlloc(0);
    auto *entry = TypeParam::entryAlloc(64);
    EXPECT_TRUE(bare->data == nullptr && entry->data == entry + 1);
    std::memset(entry->data, 0x5A, 64);  // within the block, or the address sanitizer objects
    entry->data = bare;
    entry->next = entry;
    TypeParam::entryInit(entry);
    EXPECT_TRUE(entry->next == nullptr && entry->data == bare) << "the links are cleared, the data pointer kept";
    TypeParam::entryFree(entry);  // not bare, which it points to
    EXPECT_TRUE(sizeof(void *) > 4 || TypeParam::entryAlloc(UINT32_MAX) == nullptr)
        << "the block size must not wrap around";
    int key = 1;
    EXPECT_EQ(TypeParam::insert(nullptr, bare, &key, this->compare), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(TypeParam::insert(this->header, bare, nullptr, this->compare), SM_STATUS_INVALID_PARAMETER);
    TypeParam::entryFree(bare);
}

}  // namespace
