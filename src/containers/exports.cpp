// Exported entries of the containers: lists, the red-black tree and the hash-ID table.
#include <zksupt/containers.h>

#include "containers/hash_ids.h"
#include "containers/lists.h"
#include "containers/tree.h"

namespace co = zksupt::containers;

// clang-format off
extern "C" {

SLList *SMSLListAlloc(void) noexcept { return co::allocateList<SLList>(); }
void SMSLListInitNoAlloc(SLList *list) noexcept { co::initList(list); }
void SMSLListFree(SLList *list) noexcept { co::freeList(list); }
SLListEntry *SMSLListEntryAlloc(uint32_t dataSize) noexcept { return co::allocateEntry<SLListEntry>(dataSize); }
void SMSLListEntryInitNoAlloc(SLListEntry *entry) noexcept { co::initEntry(entry); }
void SMSLListEntryFree(SLListEntry *entry) noexcept { co::freeEntry(entry); }
void SMSLListInsertEntryAtHead(SLList *list, SLListEntry *entry) noexcept { co::insertAtHead(list, entry); }
void SMSLListInsertEntryAtTail(SLList *list, SLListEntry *entry) noexcept { co::insertAtTail(list, entry); }
int32_t SMSLListInsertEntry(SLList *list, SLListEntry *entry, void *key, SLListCallback compare) noexcept { return co::insertOrdered(list, entry, key, compare); }
SLListEntry *SMSLListWalkAtHead(SLList *list, void *context, SLListCallback callback) noexcept { return co::walkFromHead(list, context, callback); }
SLListEntry *SMSLListReplaceEntry(SLList *list, SLListEntry *entry, void *key, SLListCallback match) noexcept { return co::replaceEntry(list, entry, key, match); }
void SMSLListDeleteEntry(SLList *list, SLListEntry *prev, SLListEntry *entry) noexcept { co::deleteEntry(list, prev, entry); }
SLListEntry *SMSLListRemoveEntryAtHead(SLList *list) noexcept { return co::removeHead(list); }
SLListEntry *SMSLListRemoveEntryAtTail(SLList *list) noexcept { return co::removeTail(list); }
int32_t SMSLListIsEmpty(const SLList *list) noexcept { return co::isEmpty(list); }

DLList *SMDLListAlloc(void) noexcept { return co::allocateList<DLList>(); }
void SMDLListInitNoAlloc(DLList *list) noexcept { co::initList(list); }
void SMDLListFree(DLList *list) noexcept { co::freeList(list); }
DLListEntry *SMDLListEntryAlloc(uint32_t dataSize) noexcept { return co::allocateEntry<DLListEntry>(dataSize); }
void SMDLListEntryInitNoAlloc(DLListEntry *entry) noexcept { co::initEntry(entry); }
void SMDLListEntryFree(DLListEntry *entry) noexcept { co::freeEntry(entry); }
void SMDLListInsertEntryAtHead(DLList *list, DLListEntry *entry) noexcept { co::insertAtHead(list, entry); }
void SMDLListInsertEntryAtTail(DLList *list, DLListEntry *entry) noexcept { co::insertAtTail(list, entry); }
int32_t SMDLListInsertEntry(DLList *list, DLListEntry *entry, void *key, DLListCallback compare) noexcept { return co::insertOrdered(list, entry, key, compare); }
DLListEntry *SMDLListWalkAtHead(DLList *list, void *context, DLListCallback callback) noexcept { return co::walkFromHead(list, context, callback); }
DLListEntry *SMDLListWalkAtTail(DLList *list, void *context, DLListCallback callback) noexcept { return co::walkFromTail(list, context, callback); }
DLListEntry *SMDLListReplaceEntry(DLList *list, DLListEntry *entry, void *key, DLListCallback match) noexcept { return co::replaceEntry(list, entry, key, match); }
void SMDLListDeleteEntry(DLList *list, DLListEntry *entry) noexcept { co::deleteEntry(list, entry); }
DLListEntry *SMDLListRemoveEntryAtHead(DLList *list) noexcept { return co::removeHead(list); }
DLListEntry *SMDLListRemoveEntryAtTail(DLList *list) noexcept { return co::removeTail(list); }
int32_t SMDLListIsEmpty(const DLList *list) noexcept { return co::isEmpty(list); }

void SMRedBlackTreeAttach(RedBlackTree *tree) noexcept { co::resetTree(tree); }
void SMRedBlackTreeDetach(RedBlackTree *tree) noexcept { co::resetTree(tree); }
int32_t SMRedBlackTreeIsEmpty(const RedBlackTreeNode *root) noexcept { return co::isTreeEmpty(root); }
int32_t SMRedBlackTreeDataInsert(RedBlackTree *tree, void *data, void *key, RedBlackTreeCallback compare) noexcept { return co::insertData(tree, data, key, compare); }
void *SMRedBlackTreeDataReplace(RedBlackTree *tree, void *data, void *key, RedBlackTreeCallback compare) noexcept { return co::replaceData(tree, data, key, compare); }
int32_t SMRedBlackTreeDataDelete(RedBlackTree *tree, void *key, RedBlackTreeCallback compare) noexcept { return co::deleteData(tree, key, compare); }
void SMRedBlackTreeDelete(RedBlackTree *tree, void *context, RedBlackTreeFreeCallback release) noexcept { co::deleteTree(tree, context, release); }
void *SMRedBlackTreeDataWalk(const RedBlackTreeNode *root, void *context, RedBlackTreeCallback callback, uint32_t order) noexcept { return co::walkTree(root, context, callback, order); }

uint32_t SMHashTableBytesNeeded(uint32_t n) noexcept { return co::hashTableBytesNeeded(n); }
int32_t SMClearHashTable(uint32_t *table, uint32_t bytes) noexcept { return co::clearHashTable(table, bytes); }
uint32_t SMAcquireHashID(uint32_t *table, uint32_t bytes, uint32_t mode) noexcept { return co::acquireHashId(table, bytes, mode); }
int32_t SMAcquireHashIDByID(uint32_t *table, uint32_t bytes, uint32_t id) noexcept { return co::acquireHashIdById(table, bytes, id); }
int32_t SMVerifyHashID(const uint32_t *table, uint32_t bytes, uint32_t id) noexcept { return co::verifyHashId(table, bytes, id); }
int32_t SMReleaseHashID(uint32_t *table, uint32_t bytes, uint32_t id) noexcept { return co::releaseHashId(table, bytes, id); }
uint32_t SMGetMinInUseID(const uint32_t *table, uint32_t bytes) noexcept { return co::minInUseId(table, bytes); }
uint32_t SMGetMaxInUseID(const uint32_t *table, uint32_t bytes) noexcept { return co::maxInUseId(table, bytes); }
uint32_t SMFindFirstHashID(const uint32_t *table, uint32_t bytes, uint32_t *word, uint32_t *bit) noexcept { return co::findFirstHashId(table, bytes, word, bit); }
uint32_t SMFindNextHashID(const uint32_t *table, uint32_t bytes, uint32_t *word, uint32_t *bit) noexcept { return co::findNextHashId(table, bytes, word, bit); }

}  // extern "C"
// clang-format on
