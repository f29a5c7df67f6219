// A typed, owning red-black tree for the library's own tables (file locks,
// critical sections, loaded libraries, log limits), so that they never
// write the callback plumbing of the C-style tree by hand.
//
// Tree<T, Key, Compare> owns T objects, each made by emplace and destroyed by
// erase, clear or the destructor. Compare is a stateless three-way
// comparison: Compare{}(const Key &, const T &) is negative when the key
// belongs before the item, 0 when it names it, positive when after it.
//
//     struct ByPath { int operator()(std::string_view key, const Lock &lock) const; };
//     Tree<Lock, std::string_view, ByPath> locks;
//     auto [lock, status] = locks.emplace(path, path, mode);
//
// Like every container of the library it does not lock.
#pragma once

#include <zksupt/status.h>

#include <cstdint>
#include <utility>

#include "containers/tree.h"

namespace zksupt::containers {

template <class T, class Key, class Compare> class Tree {
  public:
    // The added item, or null with the status that refused it.
    struct Inserted {
        T *item;
        int32_t status;
    };

    Tree() noexcept = default;
    Tree(const Tree &) = delete;
    Tree &operator=(const Tree &) = delete;
    Tree(Tree &&other) noexcept : root_(std::exchange(other.root_, nullptr)) {}
    Tree &operator=(Tree &&other) noexcept
    {
        if (this != &other) {
            clear();
            root_ = std::exchange(other.root_, nullptr);
        }
        return *this;
    }
    ~Tree() { clear(); }

    bool empty() const noexcept { return root_ == nullptr; }

    T *find(const Key &key) noexcept
    {
        RedBlackTreeNode *node = findNode(root_, keyAddress(key), &compareKey);
        return node != nullptr ? static_cast<T *>(node->data) : nullptr;
    }

    // Makes a T from args and adds it under key: 0x102 when the key is
    // taken, 0x110 when memory runs out (the new item is dropped then).
    template <class... Args> Inserted emplace(const Key &key, Args &&...args) noexcept
    {
        T *item = make(std::forward<Args>(args)...);
        if (item == nullptr)
            return {nullptr, SM_STATUS_NO_MEMORY};
        const int32_t status = insertData(&root_, item, keyAddress(key), &compareKey);
        if (status != SM_STATUS_SUCCESS) {
            delete item;
            return {nullptr, status};
        }
        return {item, SM_STATUS_SUCCESS};
    }

    // Destroys the item under key: 0, or 0x100 when there is none.
    int32_t erase(const Key &key) noexcept
    {
        void *removed = nullptr;
        const int32_t status = deleteData(&root_, keyAddress(key), &compareKey, &removed);
        if (status == SM_STATUS_SUCCESS)
            delete static_cast<T *>(removed);
        return status;
    }

    void clear() noexcept { deleteTree(&root_, nullptr, &destroy); }

    // The first item in ascending order for which visit(T &) returns true, or null.
    template <class Visit> T *findIf(Visit visit)
    {
        return static_cast<T *>(walkTree(root_, &visit, &visitItem<Visit>, kAscending));
    }

    // Calls visit(T &) for every item in ascending order.
    template <class Visit> void forEach(Visit visit)
    {
        findIf([&visit](T &item) {
            visit(item);
            return false;
        });
    }

  private:
    // The tree hands keys back to compareKey untouched, never writing through them.
    static void *keyAddress(const Key &key) noexcept { return const_cast<Key *>(&key); }

    static int32_t compareKey(void *key, void *item)
    {
        return static_cast<int32_t>(Compare{}(*static_cast<const Key *>(key), *static_cast<const T *>(item)));
    }

    static void destroy(void *, void *item) { delete static_cast<T *>(item); }

    template <class Visit> static int32_t visitItem(void *visit, void *item)
    {
        return (*static_cast<Visit *>(visit))(*static_cast<T *>(item)) ? 0 : 1;
    }

    // Building an item fails only for want of memory, whether in new itself or
    // in a member that allocates (a string, a vector).
    template <class... Args> static T *make(Args &&...args) noexcept
    {
        try {
            return new T(std::forward<Args>(args)...);
        } catch (...) {
            return nullptr;
        }
    }

    RedBlackTree root_ = nullptr;
};

}  // namespace zksupt::containers
