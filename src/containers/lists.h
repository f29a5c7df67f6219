// The singly and doubly linked lists: one implementation for both families.
// A list is a head/tail header over caller-owned entries; the doubly linked
// entries also keep their prev links, which every operation maintains when
// the entry type has one.
#pragma once

#include <zksupt/containers.h>
#include <zksupt/status.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <type_traits>

namespace zksupt::containers {

template <class List> using EntryOf = std::remove_pointer_t<decltype(List::head)>;

template <class Entry> using ListCallback = int32_t (*)(void *, Entry *);

template <class Entry>
concept DoublyLinked = requires(Entry entry)
{
    entry.prev;
};

template <class List> List *allocateList() noexcept
{
    auto *list = static_cast<List *>(std::malloc(sizeof(List)));
    if (list != nullptr)
        *list = List{};
    return list;
}

template <class List> void initList(List *list) noexcept
{
    if (list != nullptr)
        *list = List{};
}

// The entries still linked stay the caller's.
template <class List> void freeList(List *list) noexcept
{
    std::free(list);
}

// One block: the entry header, then its data area.
template <class Entry> Entry *allocateEntry(uint32_t dataSize) noexcept
{
    // On a 32-bit target the header plus a size near 4 GiB would wrap around.
    if (dataSize > std::numeric_limits<size_t>::max() - sizeof(Entry))
        return nullptr;
    auto *entry = static_cast<Entry *>(std::malloc(sizeof(Entry) + dataSize));
    if (entry == nullptr)
        return nullptr;
    *entry = Entry{};
    if (dataSize > 0)
        entry->data = entry + 1;
    return entry;
}

// Only the links: an entry in the caller's storage may already carry its data pointer.
template <class Entry> void initEntry(Entry *entry) noexcept
{
    if (entry == nullptr)
        return;
    entry->next = nullptr;
    if constexpr (DoublyLinked<Entry>)
        entry->prev = nullptr;
}

// Data that the entry points to outside its own block stays the caller's.
template <class Entry> void freeEntry(Entry *entry) noexcept
{
    std::free(entry);
}

// Links entry between prev and next, either of which may be null (list ends).
template <class List, class Entry = EntryOf<List>>
void linkBetween(List *list, Entry *prev, Entry *entry, Entry *next) noexcept
{
    entry->next = next;
    (prev != nullptr ? prev->next : list->head) = entry;
    if constexpr (DoublyLinked<Entry>) {
        entry->prev = prev;
        (next != nullptr ? next->prev : list->tail) = entry;
    } else if (next == nullptr) {
        list->tail = entry;
    }
}

template <class List, class Entry = EntryOf<List>> void insertAtHead(List *list, Entry *entry) noexcept
{
    if (list != nullptr && entry != nullptr)
        linkBetween(list, static_cast<Entry *>(nullptr), entry, list->head);
}

template <class List, class Entry = EntryOf<List>> void insertAtTail(List *list, Entry *entry) noexcept
{
    if (list != nullptr && entry != nullptr)
        linkBetween(list, list->tail, entry, static_cast<Entry *>(nullptr));
}

// The first entry from the head for which the callback gives 0, and its predecessor.
template <class Entry> struct Found {
    Entry *prev;
    Entry *entry;
};

template <class List, class Entry = EntryOf<List>>
Found<Entry> findFromHead(List *list, void *key, ListCallback<Entry> callback) noexcept
{
    Entry *prev = nullptr;
    for (Entry *entry = list->head; entry != nullptr; prev = entry, entry = entry->next)
        if (callback(key, entry) == 0)
            return {prev, entry};
    return {prev, nullptr};
}

// Equal keys are refused, so a list built only this way is strictly ascending.
template <class List, class Entry = EntryOf<List>>
int32_t insertOrdered(List *list, Entry *entry, void *key, ListCallback<Entry> compare) noexcept
{
    if (list == nullptr || entry == nullptr || key == nullptr || compare == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    Entry *prev = nullptr;
    Entry *next = list->head;
    for (; next != nullptr; prev = next, next = next->next) {
        const int32_t order = compare(key, next);
        if (order == 0)
            return SM_STATUS_DUPLICATE;
        if (order < 0)
            break;
    }
    linkBetween(list, prev, entry, next);
    return SM_STATUS_SUCCESS;
}

template <class List, class Entry = EntryOf<List>>
Entry *walkFromHead(List *list, void *context, ListCallback<Entry> callback) noexcept
{
    if (list == nullptr || context == nullptr || callback == nullptr)
        return nullptr;
    return findFromHead(list, context, callback).entry;
}

template <class List, class Entry = EntryOf<List>>
Entry *walkFromTail(List *list, void *context, ListCallback<Entry> callback) noexcept
{
    if (list == nullptr || context == nullptr || callback == nullptr)
        return nullptr;
    for (Entry *entry = list->tail; entry != nullptr; entry = entry->prev)
        if (callback(context, entry) == 0)
            return entry;
    return nullptr;
}

// The old entry leaves the list with its own links untouched.
template <class List, class Entry = EntryOf<List>>
Entry *replaceEntry(List *list, Entry *entry, void *key, ListCallback<Entry> match) noexcept
{
    if (list == nullptr || entry == nullptr || key == nullptr || match == nullptr)
        return nullptr;
    const Found<Entry> old = findFromHead(list, key, match);
    if (old.entry != nullptr)
        linkBetween(list, old.prev, entry, old.entry->next);
    return old.entry;
}

// The unlinked entry keeps its own links.
template <class List, class Entry = EntryOf<List>> void unlinkAfter(List *list, Entry *prev, Entry *entry) noexcept
{
    Entry *next = entry->next;
    (prev != nullptr ? prev->next : list->head) = next;
    if constexpr (DoublyLinked<Entry>)
        (next != nullptr ? next->prev : list->tail) = prev;
    else if (next == nullptr)
        list->tail = prev;
}

// A singly linked entry needs its predecessor from the caller (null for the head).
template <class List, class Entry = EntryOf<List>> void deleteEntry(List *list, Entry *prev, Entry *entry) noexcept
{
    if (list != nullptr && entry != nullptr)
        unlinkAfter(list, prev, entry);
}

template <class List, class Entry = EntryOf<List>>
requires DoublyLinked<Entry>
void deleteEntry(List *list, Entry *entry) noexcept
{
    if (list != nullptr && entry != nullptr)
        unlinkAfter(list, entry->prev, entry);
}

template <class List, class Entry = EntryOf<List>> Entry *removeHead(List *list) noexcept
{
    if (list == nullptr || list->head == nullptr)
        return nullptr;
    Entry *head = list->head;
    unlinkAfter(list, static_cast<Entry *>(nullptr), head);
    return head;
}

// A singly linked list has to walk from the head to find the tail's predecessor.
template <class List, class Entry = EntryOf<List>> Entry *removeTail(List *list) noexcept
{
    if (list == nullptr || list->tail == nullptr)
        return nullptr;
    Entry *tail = list->tail;
    Entry *prev = nullptr;
    if constexpr (DoublyLinked<Entry>) {
        prev = tail->prev;
    } else {
        for (Entry *entry = list->head; entry != tail; entry = entry->next)
            prev = entry;
    }
    unlinkAfter(list, prev, tail);
    return tail;
}

template <class List> int32_t isEmpty(const List *list) noexcept
{
    return list == nullptr || list->head == nullptr ? 1 : 0;
}

}  // namespace zksupt::containers
