// The configuration object: allocation, adding and replacing entries (with
// nested objects given as handles or as binary input), lookups and removal.
#include <zksupt/status.h>

#include <algorithm>
#include <cstring>

#include "containers/tree.h"
#include "frame/owned.h"
#include "frame/size_out.h"
#include "sdo/binary.h"
#include "sdo/config.h"
#include "sdo/layout.h"

namespace zksupt::sdo {
namespace {

int32_t compareId(void *key, void *data)
{
    const uint16_t id = *static_cast<const uint16_t *>(key);
    const uint16_t other = static_cast<const Entry *>(data)->id;
    return (id > other) - (id < other);
}

// A record or a node, unless it lies in the object's bulk block.
void freeUnlessBulk(const SDOConfig *config, void *block) noexcept
{
    if (config->bulk == nullptr || !config->bulk->holds(block))
        std::free(block);
}

// The tree's release callbacks, with the object as context.
void releaseEntry(void *config, void *data)
{
    auto *entry = static_cast<Entry *>(data);
    releaseChildren(*entry);
    freeUnlessBulk(static_cast<SDOConfig *>(config), entry);
}

void releaseNode(void *config, RedBlackTreeNode *node)
{
    freeUnlessBulk(static_cast<SDOConfig *>(config), node);
}

// Every entry with its nested objects, and the bulk block.
void clearEntries(SDOConfig *config) noexcept
{
    containers::deleteTree(&config->tree, config, &releaseEntry, &releaseNode);
    std::free(config->bulk);
    config->bulk = nullptr;
}

Entry *findEntry(const SDOConfig *config, uint16_t id) noexcept
{
    RedBlackTreeNode *node = containers::findNode(config->tree, &id, &compareId);
    return node != nullptr ? static_cast<Entry *>(node->data) : nullptr;
}

// A stale binary size (children changed after they were added) can make a
// removal charge back more than was recorded: the size never drops below
// the header's.
void adjustBinarySize(SDOConfig *config, uint64_t gained, uint64_t lost) noexcept
{
    const uint64_t size = config->binarySize + gained;
    config->binarySize = static_cast<uint32_t>(size > lost + kHeaderSize ? size - lost : kHeaderSize);
}

// The type is reported even when the value does not fit.
int32_t copyOut(const Entry &entry, uint8_t *type, void *buffer, uint32_t *size) noexcept
{
    if (type != nullptr)
        *type = entry.type;
    return frame::copyOutBytes(buffer, size, entry.data(), entry.dataSize);
}

// The value an add stores, once nested input is resolved: the caller's bytes,
// the caller's child handle, or objects made here from a binary object or
// array. Objects made here are freed again unless an entry takes them.
class NestedValue {
  public:
    NestedValue(uint8_t type, const void *value, uint32_t size) noexcept
        : type_(type), bytes_(static_cast<const uint8_t *>(value)), size_(size)
    {
    }
    NestedValue(const NestedValue &) = delete;
    NestedValue &operator=(const NestedValue &) = delete;
    ~NestedValue()
    {
        for (uint32_t i = made_; i > 0; --i)
            freeConfig(handles_.get()[i - 1]);
        if (madeOne_)
            freeConfig(single_);
    }

    int32_t resolve() noexcept
    {
        switch (baseOf(type_)) {
        case kBaseBlock:
            return fromBinary();
        case kBaseNested:
            return (type_ & kArrayFlag) != 0 ? checkHandles() : takeHandle(handleOf(bytes_));
        default:
            return SM_STATUS_SUCCESS;
        }
    }

    void handOver() noexcept
    {
        made_ = 0;
        madeOne_ = false;
    }

    uint8_t type() const noexcept { return type_; }
    const uint8_t *bytes() const noexcept { return bytes_; }
    uint32_t size() const noexcept { return size_; }

  private:
    static SDOConfig *handleOf(const void *value) noexcept
    {
        return static_cast<SDOConfig *>(const_cast<void *>(value));
    }

    int32_t fromBinary() noexcept
    {
        const Kind kind = size_ >= kHeaderSize ? kindOf(bytes_) : Kind::invalid;
        if (kind == Kind::object) {
            SDOConfig *child = binaryToConfig(bytes_, size_);
            if (child == nullptr)
                return SM_STATUS_FAILURE;
            madeOne_ = true;
            type_ = static_cast<uint8_t>((type_ & 0xF0) | kBaseNested);
            size_ = kHandleSize;
            return takeHandle(child);
        }
        if (kind != Kind::array)
            return SM_STATUS_INVALID_PARAMETER;
        uint32_t count = frame::loadAs<uint16_t>(bytes_ + 4);
        handles_ = frame::allocateZeroed<SDOConfig *>(std::max(count, 1u));
        if (handles_ == nullptr)
            return SM_STATUS_NO_MEMORY;
        if (const int32_t status = binaryArrayToConfigs(bytes_, handles_.get(), &count, size_))
            return status;
        made_ = count;
        type_ = static_cast<uint8_t>((type_ & 0xF0) | kArrayFlag | kBaseNested);
        bytes_ = reinterpret_cast<const uint8_t *>(handles_.get());
        size_ = count * kHandleSize;
        return SM_STATUS_SUCCESS;
    }

    // The size accounting reads every child, so none may be null.
    int32_t checkHandles() const noexcept
    {
        if (size_ % kHandleSize != 0)
            return SM_STATUS_INVALID_PARAMETER;
        for (uint32_t i = 0; i < size_ / kHandleSize; ++i)
            if (handleAt(bytes_, i) == nullptr)
                return SM_STATUS_INVALID_PARAMETER;
        return SM_STATUS_SUCCESS;
    }

    int32_t takeHandle(SDOConfig *child) noexcept
    {
        if (child == nullptr || size_ != kHandleSize)
            return SM_STATUS_INVALID_PARAMETER;
        single_ = child;
        bytes_ = reinterpret_cast<const uint8_t *>(&single_);
        return SM_STATUS_SUCCESS;
    }

    uint8_t type_;
    const uint8_t *bytes_;
    uint32_t size_;
    SDOConfig *single_ = nullptr;
    bool madeOne_ = false;
    frame::Owned<SDOConfig *> handles_;
    uint32_t made_ = 0;
};

}  // namespace

SDOConfig *allocConfig() noexcept
{
    auto *config = static_cast<SDOConfig *>(std::calloc(1, sizeof(SDOConfig)));
    if (config != nullptr)
        config->binarySize = kHeaderSize;
    return config;
}

void freeConfig(SDOConfig *config) noexcept
{
    if (config == nullptr)
        return;
    clearEntries(config);
    std::free(config);
}

uint32_t entryCount(const SDOConfig *config) noexcept
{
    return config != nullptr ? config->count : 0xFFFFFFFFu;
}

uint32_t binarySizeOf(const SDOConfig *config) noexcept
{
    return config != nullptr ? config->binarySize : 0;
}

int32_t addData(SDOConfig *config, uint16_t id, uint8_t type, const void *value, uint32_t size,
                int32_t replace) noexcept
{
    if (config == nullptr || !validId(id) || type == 0 || value == nullptr || size == 0)
        return SM_STATUS_INVALID_PARAMETER;
    NestedValue input(type, value, size);
    if (const int32_t status = input.resolve())
        return status;
    if (config->count >= kMaxEntries)
        return SM_STATUS_LIMIT_REACHED;
    // Checked against the size before the add, even when the add replaces.
    const uint64_t cost = costOf(input.type(), input.bytes(), input.size());
    if (config->binarySize + cost > kLargestBlock)
        return SM_STATUS_LIMIT_REACHED;

    // At least four value bytes, zeros past the value: an inline value is
    // written out as one word with its padding.
    frame::Owned<Entry> entry(static_cast<Entry *>(std::calloc(1, sizeof(Entry) + std::max(input.size(), kInlineMax))));
    if (entry == nullptr)
        return SM_STATUS_NO_MEMORY;
    *entry = Entry{input.size(), id, input.type(), 0};
    if (input.size() != 0)
        std::memcpy(entry->data(), input.bytes(), input.size());

    if (replace == 1) {
        if (auto *old = static_cast<Entry *>(containers::replaceData(&config->tree, entry.get(), &id, &compareId))) {
            const Entry *fresh = entry.release();
            input.handOver();
            adjustBinarySize(config, cost, costOf(*old));
            releaseChildren(*old, fresh);
            freeUnlessBulk(config, old);
            return SM_STATUS_SUCCESS;
        }
    }
    if (const int32_t status = containers::insertData(&config->tree, entry.get(), &id, &compareId))
        return status;
    entry.release();
    input.handOver();
    ++config->count;
    config->binarySize += static_cast<uint32_t>(cost);
    return SM_STATUS_SUCCESS;
}

int32_t getDataById(const SDOConfig *config, uint16_t id, uint8_t *type, void *buffer, uint32_t *size) noexcept
{
    if (config == nullptr || !validId(id) || size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const Entry *entry = findEntry(config, id);
    return entry != nullptr ? copyOut(*entry, type, buffer, size) : SM_STATUS_NOT_FOUND;
}

const Entry *entryAtIndex(const SDOConfig *config, uint32_t index) noexcept
{
    const Entry *found = nullptr;
    uint32_t position = 0;
    forEachEntry(config, [&](const Entry &entry) {
        if (position++ != index)
            return true;
        found = &entry;
        return false;
    });
    return found;
}

int32_t getDataByIndex(const SDOConfig *config, uint32_t index, uint16_t *id, uint8_t *type, void *buffer,
                       uint32_t *size) noexcept
{
    if (config == nullptr || id == nullptr || size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (index >= config->count)
        return SM_STATUS_NOT_PRESENT;
    const Entry *entry = entryAtIndex(config, index);
    if (entry == nullptr)
        return SM_STATUS_NOT_FOUND;
    *id = entry->id;
    return copyOut(*entry, type, buffer, size);
}

int32_t removeData(SDOConfig *config, uint16_t id, uint32_t index, int32_t removeAll) noexcept
{
    if (config == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (removeAll != 0) {
        clearEntries(config);
        config->count = 0;
        config->binarySize = kHeaderSize;
        return SM_STATUS_SUCCESS;
    }
    if (!validId(id)) {
        if (index >= config->count)
            return SM_STATUS_NOT_PRESENT;
        const Entry *entry = entryAtIndex(config, index);
        if (entry == nullptr)
            return SM_STATUS_NOT_FOUND;
        id = entry->id;
    }
    void *removed = nullptr;
    RedBlackTreeNode *left = containers::detachData(&config->tree, &id, &compareId, &removed);
    if (left == nullptr)
        return SM_STATUS_NOT_FOUND;
    --config->count;
    adjustBinarySize(config, 0, costOf(*static_cast<const Entry *>(removed)));
    releaseEntry(config, removed);
    releaseNode(config, left);
    return SM_STATUS_SUCCESS;
}

}  // namespace zksupt::sdo
