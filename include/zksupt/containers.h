/**
 * @file
 * Containers: singly and doubly linked lists, the red-black tree and the hash-ID table.
 *
 * None of them locks: callers serialise access to one container; different containers may be used from different
 * threads. The containers never free the caller's data: list entries come from SMSLListEntryAlloc() and
 * SMDLListEntryAlloc() (freed with the matching free function) or from the caller; tree nodes are the tree's own.
 * A hash-ID table is the caller's array of 32-bit words, one bit per ID, of the size SMHashTableBytesNeeded() gives.
 */
#ifndef ZKSUPT_CONTAINERS_H
#define ZKSUPT_CONTAINERS_H

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/** Entry of a singly linked list; an allocated entry's data area follows it directly. */
typedef struct SLListEntry SLListEntry;
struct SLListEntry {
    SLListEntry *next; /**< following entry, null at the tail */
    void *data;        /**< the data area behind the entry, or the caller's own pointer */
};

/** Entry of a doubly linked list; an allocated entry's data area follows it directly. */
typedef struct DLListEntry DLListEntry;
struct DLListEntry {
    DLListEntry *next; /**< following entry, null at the tail */
    DLListEntry *prev; /**< preceding entry, null at the head */
    void *data;        /**< the data area behind the entry, or the caller's own pointer */
};

/** Header of a singly linked list: both ends null when the list is empty. */
typedef struct SLList {
    SLListEntry *head; /**< first entry */
    SLListEntry *tail; /**< last entry */
} SLList;

/** Header of a doubly linked list: both ends null when the list is empty. */
typedef struct DLList {
    DLListEntry *head; /**< first entry */
    DLListEntry *tail; /**< last entry */
} DLList;

/** List callback: called as (key or context, entry); 0 picks the entry. For the ordered
 * insert, negative puts the new entry before this one and positive after it. */
typedef int32_t (*SLListCallback)(void *key, SLListEntry *entry);
/** The doubly linked list's callback, as SLListCallback. */
typedef int32_t (*DLListCallback)(void *key, DLListEntry *entry);

/** Node of a red-black tree; nodes are allocated and freed by the tree. */
typedef struct RedBlackTreeNode RedBlackTreeNode;
struct RedBlackTreeNode {
    RedBlackTreeNode *left;   /**< the subtree of smaller keys */
    RedBlackTreeNode *right;  /**< the subtree of greater keys */
    RedBlackTreeNode *parent; /**< null at the root */
    void *data;               /**< the caller's data pointer */
    uint32_t color;           /**< 1 = red, 0 = black */
};

/** A red-black tree is its root pointer, null when empty. */
typedef RedBlackTreeNode *RedBlackTree;

/** Tree compare or walk callback: called as (key or context, node data); 0 matches, a
 * negative value steers left and a positive one right. */
typedef int32_t (*RedBlackTreeCallback)(void *key, void *data);
/** Called once for every node's data when a whole tree is deleted. */
typedef void (*RedBlackTreeFreeCallback)(void *context, void *data);

/** Allocates an empty singly linked list header; null when memory is exhausted. */
ZKSUPT_API SLList *SMSLListAlloc(void) ZKSUPT_NOEXCEPT;
/** Makes the caller's header an empty list; null is ignored. */
ZKSUPT_API void SMSLListInitNoAlloc(SLList *list) ZKSUPT_NOEXCEPT;
/** Frees a header from SMSLListAlloc, leaving any linked entries alone; null is ignored. */
ZKSUPT_API void SMSLListFree(SLList *list) ZKSUPT_NOEXCEPT;
/** Allocates an unlinked entry with dataSize bytes of data behind it (data null for 0). */
ZKSUPT_API SLListEntry *SMSLListEntryAlloc(uint32_t dataSize) ZKSUPT_NOEXCEPT;
/** Clears the links of the caller's entry, keeping its data pointer; null is ignored. */
ZKSUPT_API void SMSLListEntryInitNoAlloc(SLListEntry *entry) ZKSUPT_NOEXCEPT;
/** Frees an entry from SMSLListEntryAlloc (not data it points to elsewhere); null is ignored. */
ZKSUPT_API void SMSLListEntryFree(SLListEntry *entry) ZKSUPT_NOEXCEPT;
/** Links the entry before the head. */
ZKSUPT_API void SMSLListInsertEntryAtHead(SLList *list, SLListEntry *entry) ZKSUPT_NOEXCEPT;
/** Links the entry after the tail. */
ZKSUPT_API void SMSLListInsertEntryAtTail(SLList *list, SLListEntry *entry) ZKSUPT_NOEXCEPT;
/** Links the entry before the first one that compares greater: #SM_STATUS_SUCCESS, #SM_STATUS_DUPLICATE for an equal
 * key, #SM_STATUS_INVALID_PARAMETER for null. */
ZKSUPT_API int32_t SMSLListInsertEntry(SLList *list, SLListEntry *entry, void *key,
                                       SLListCallback compare) ZKSUPT_NOEXCEPT;
/** First entry from the head for which the callback returns 0, or null. */
ZKSUPT_API SLListEntry *SMSLListWalkAtHead(SLList *list, void *context, SLListCallback callback) ZKSUPT_NOEXCEPT;
/** Puts the new entry in place of the first match and returns the unlinked match, or null. */
ZKSUPT_API SLListEntry *SMSLListReplaceEntry(SLList *list, SLListEntry *entry, void *key,
                                             SLListCallback match) ZKSUPT_NOEXCEPT;
/** Unlinks the entry whose predecessor is prev (null for the head) without freeing it. */
ZKSUPT_API void SMSLListDeleteEntry(SLList *list, SLListEntry *prev, SLListEntry *entry) ZKSUPT_NOEXCEPT;
/** Unlinks and returns the head, or null when the list is empty. */
ZKSUPT_API SLListEntry *SMSLListRemoveEntryAtHead(SLList *list) ZKSUPT_NOEXCEPT;
/** Unlinks and returns the tail (a walk from the head), or null when the list is empty. */
ZKSUPT_API SLListEntry *SMSLListRemoveEntryAtTail(SLList *list) ZKSUPT_NOEXCEPT;
/** 1 when the list is null or empty, else 0. */
ZKSUPT_API int32_t SMSLListIsEmpty(const SLList *list) ZKSUPT_NOEXCEPT;

/** Allocates an empty doubly linked list header; null when memory is exhausted. */
ZKSUPT_API DLList *SMDLListAlloc(void) ZKSUPT_NOEXCEPT;
/** Makes the caller's header an empty list; null is ignored. */
ZKSUPT_API void SMDLListInitNoAlloc(DLList *list) ZKSUPT_NOEXCEPT;
/** Frees a header from SMDLListAlloc, leaving any linked entries alone; null is ignored. */
ZKSUPT_API void SMDLListFree(DLList *list) ZKSUPT_NOEXCEPT;
/** Allocates an unlinked entry with dataSize bytes of data behind it (data null for 0). */
ZKSUPT_API DLListEntry *SMDLListEntryAlloc(uint32_t dataSize) ZKSUPT_NOEXCEPT;
/** Clears the links of the caller's entry, keeping its data pointer; null is ignored. */
ZKSUPT_API void SMDLListEntryInitNoAlloc(DLListEntry *entry) ZKSUPT_NOEXCEPT;
/** Frees an entry from SMDLListEntryAlloc (not data it points to elsewhere); null is ignored. */
ZKSUPT_API void SMDLListEntryFree(DLListEntry *entry) ZKSUPT_NOEXCEPT;
/** Links the entry before the head. */
ZKSUPT_API void SMDLListInsertEntryAtHead(DLList *list, DLListEntry *entry) ZKSUPT_NOEXCEPT;
/** Links the entry after the tail. */
ZKSUPT_API void SMDLListInsertEntryAtTail(DLList *list, DLListEntry *entry) ZKSUPT_NOEXCEPT;
/** Links the entry before the first one that compares greater: #SM_STATUS_SUCCESS, #SM_STATUS_DUPLICATE for an equal
 * key, #SM_STATUS_INVALID_PARAMETER for null. */
ZKSUPT_API int32_t SMDLListInsertEntry(DLList *list, DLListEntry *entry, void *key,
                                       DLListCallback compare) ZKSUPT_NOEXCEPT;
/** First entry from the head for which the callback returns 0, or null. */
ZKSUPT_API DLListEntry *SMDLListWalkAtHead(DLList *list, void *context, DLListCallback callback) ZKSUPT_NOEXCEPT;
/** First entry from the tail for which the callback returns 0, or null. */
ZKSUPT_API DLListEntry *SMDLListWalkAtTail(DLList *list, void *context, DLListCallback callback) ZKSUPT_NOEXCEPT;
/** Puts the new entry in place of the first match and returns the unlinked match, or null. */
ZKSUPT_API DLListEntry *SMDLListReplaceEntry(DLList *list, DLListEntry *entry, void *key,
                                             DLListCallback match) ZKSUPT_NOEXCEPT;
/** Unlinks the entry without freeing it; its own links keep their values. */
ZKSUPT_API void SMDLListDeleteEntry(DLList *list, DLListEntry *entry) ZKSUPT_NOEXCEPT;
/** Unlinks and returns the head, or null when the list is empty. */
ZKSUPT_API DLListEntry *SMDLListRemoveEntryAtHead(DLList *list) ZKSUPT_NOEXCEPT;
/** Unlinks and returns the tail, or null when the list is empty. */
ZKSUPT_API DLListEntry *SMDLListRemoveEntryAtTail(DLList *list) ZKSUPT_NOEXCEPT;
/** 1 when the list is null or empty, else 0. */
ZKSUPT_API int32_t SMDLListIsEmpty(const DLList *list) ZKSUPT_NOEXCEPT;

/** Makes the tree empty (initialisation); null is ignored. */
ZKSUPT_API void SMRedBlackTreeAttach(RedBlackTree *tree) ZKSUPT_NOEXCEPT;
/** Sets the root to null without freeing nodes (empty the tree first); null is ignored. */
ZKSUPT_API void SMRedBlackTreeDetach(RedBlackTree *tree) ZKSUPT_NOEXCEPT;
/** 1 when the root is null, else 0. */
ZKSUPT_API int32_t SMRedBlackTreeIsEmpty(const RedBlackTreeNode *root) ZKSUPT_NOEXCEPT;
/** Adds data where compare places key: #SM_STATUS_SUCCESS, #SM_STATUS_DUPLICATE when an equal node exists,
 * #SM_STATUS_NO_MEMORY, #SM_STATUS_INVALID_PARAMETER for null. */
ZKSUPT_API int32_t SMRedBlackTreeDataInsert(RedBlackTree *tree, void *data, void *key,
                                            RedBlackTreeCallback compare) ZKSUPT_NOEXCEPT;
/** Swaps the matching node's data for data and returns the old pointer, or null when none matches. */
ZKSUPT_API void *SMRedBlackTreeDataReplace(RedBlackTree *tree, void *data, void *key,
                                           RedBlackTreeCallback compare) ZKSUPT_NOEXCEPT;
/** Removes the node matching key (its data is not freed): #SM_STATUS_SUCCESS, #SM_STATUS_NOT_FOUND,
 * #SM_STATUS_INVALID_PARAMETER for null. */
ZKSUPT_API int32_t SMRedBlackTreeDataDelete(RedBlackTree *tree, void *key,
                                            RedBlackTreeCallback compare) ZKSUPT_NOEXCEPT;
/** Removes every node, children before parents and right before left, passing each data to release. */
ZKSUPT_API void SMRedBlackTreeDelete(RedBlackTree *tree, void *context,
                                     RedBlackTreeFreeCallback release) ZKSUPT_NOEXCEPT;
/** Walks in order 0 (root), 1 (ascending), 2 (descending), 3 (guided) or 4 (guided, full);
 * returns the data where the callback gave 0, or null. */
ZKSUPT_API void *SMRedBlackTreeDataWalk(const RedBlackTreeNode *root, void *context, RedBlackTreeCallback callback,
                                        uint32_t order) ZKSUPT_NOEXCEPT;

/** Bytes of table for n IDs: ((n rounded down to a multiple of 32) + 32) / 8; 0 for n 0 or above 0x3FFFFFFE. */
ZKSUPT_API uint32_t SMHashTableBytesNeeded(uint32_t n) ZKSUPT_NOEXCEPT;
/** Marks every ID free: #SM_STATUS_SUCCESS, or #SM_STATUS_INVALID_PARAMETER for a null table. */
ZKSUPT_API int32_t SMClearHashTable(uint32_t *table, uint32_t bytes) ZKSUPT_NOEXCEPT;
/** Takes a free ID, mode 0 the lowest, mode 1 the one after the highest in use; 0 when none. */
ZKSUPT_API uint32_t SMAcquireHashID(uint32_t *table, uint32_t bytes, uint32_t mode) ZKSUPT_NOEXCEPT;
/** Takes the given ID: #SM_STATUS_SUCCESS, #SM_STATUS_DUPLICATE when in use, #SM_STATUS_BAD_OBJECT beyond the table,
 * #SM_STATUS_INVALID_PARAMETER for a null table. */
ZKSUPT_API int32_t SMAcquireHashIDByID(uint32_t *table, uint32_t bytes, uint32_t id) ZKSUPT_NOEXCEPT;
/** Tests an ID: #SM_STATUS_SUCCESS when in use, #SM_STATUS_NOT_PRESENT when free, #SM_STATUS_BAD_OBJECT beyond the
 * table, #SM_STATUS_INVALID_PARAMETER for a null table. */
ZKSUPT_API int32_t SMVerifyHashID(const uint32_t *table, uint32_t bytes, uint32_t id) ZKSUPT_NOEXCEPT;
/** Frees an ID: #SM_STATUS_SUCCESS, #SM_STATUS_NOT_PRESENT when not in use, #SM_STATUS_BAD_OBJECT beyond the table,
 * #SM_STATUS_INVALID_PARAMETER for a null table. */
ZKSUPT_API int32_t SMReleaseHashID(uint32_t *table, uint32_t bytes, uint32_t id) ZKSUPT_NOEXCEPT;
/** Lowest ID in use of the first non-empty word, or 0. */
ZKSUPT_API uint32_t SMGetMinInUseID(const uint32_t *table, uint32_t bytes) ZKSUPT_NOEXCEPT;
/** Highest ID in use, or 0. */
ZKSUPT_API uint32_t SMGetMaxInUseID(const uint32_t *table, uint32_t bytes) ZKSUPT_NOEXCEPT;
/** Lowest ID in use, or 0; the word and bit cursors are set to it for SMFindNextHashID. */
ZKSUPT_API uint32_t SMFindFirstHashID(const uint32_t *table, uint32_t bytes, uint32_t *word,
                                      uint32_t *bit) ZKSUPT_NOEXCEPT;
/** Next ID in use after the cursors, which move to it; 0 at the end, the cursors unchanged. */
ZKSUPT_API uint32_t SMFindNextHashID(const uint32_t *table, uint32_t bytes, uint32_t *word,
                                     uint32_t *bit) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_CONTAINERS_H */
