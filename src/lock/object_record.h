// The records behind the named-object handles callers hold. Each is one
// malloc'ed block: a kind-specific header that begins with the kind and a
// pointer to the object name, and the name text directly behind the header.
// Freed whole with free.
#pragma once

#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>

#include <zksupt/status.h>

#include "frame/owned.h"
#include "lock/object_name.h"

namespace zksupt::lock {

struct ObjectHeader {
    uint32_t kind;
    const char *name;  // the object name behind the header, or null when unnamed
};

// A Record is a plain struct whose first member is `ObjectHeader header`.
template <class Record> using OwnedRecord = frame::Owned<Record>;

// A zeroed record of kind carrying the name form of name; a null name gives
// an unnamed record. Null when the name has no form (empty, too long, no IPC
// directory for a lock file) or memory runs out.
template <class Record> OwnedRecord<Record> buildRecord(const char *name, uint32_t kind) noexcept
{
    static_assert(std::is_standard_layout_v<Record> && std::is_trivially_destructible_v<Record>);
    std::optional<ObjectName> form;
    if (name != nullptr) {
        form = objectName(kind, name);
        if (!form)
            return nullptr;
    }
    const std::size_t nameBytes = form ? form->length + 1 : 0;
    auto record = frame::allocateOwned<Record>(sizeof(Record) + nameBytes);
    if (!record)
        return nullptr;
    new (record.get()) Record{};
    record->header.kind = kind;
    if (form) {
        char *text = reinterpret_cast<char *>(record.get() + 1);
        std::memcpy(text, form->text, nameBytes);
        record->header.name = text;
    }
    return record;
}

// The record of an object that must have a name (an open, a segment): null
// for a null name, else as buildRecord.
template <class Record> OwnedRecord<Record> buildNamedRecord(const char *name, uint32_t kind) noexcept
{
    return name != nullptr ? buildRecord<Record>(name, kind) : nullptr;
}

// The handle as a record of kind: null with INVALID_PARAMETER for a null
// handle, BAD_OBJECT when it is an object of another kind.
template <class Record> Record *recordOf(void *handle, uint32_t kind, int32_t &status) noexcept
{
    if (handle == nullptr) {
        status = SM_STATUS_INVALID_PARAMETER;
        return nullptr;
    }
    auto *record = static_cast<Record *>(handle);
    if (record->header.kind != kind) {
        status = SM_STATUS_BAD_OBJECT;
        return nullptr;
    }
    status = SM_STATUS_SUCCESS;
    return record;
}

}  // namespace zksupt::lock
