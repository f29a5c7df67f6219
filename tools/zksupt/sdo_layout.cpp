#include "sdo_layout.h"

namespace zktool::sdo {
namespace {

bool fault(std::string &where, size_t offset, const char *what)
{
    where = "offset " + std::to_string(offset) + ": " + what;
    return false;
}

bool checkObject(const unsigned char *p, size_t total, size_t origin, std::string &where)
{
    const size_t count = load16(p + 4);
    const size_t dataStart = kHeaderSize + kSlotSize * count;
    if (dataStart > total)
        return fault(where, origin + 4, "the index runs past the end of the object");
    for (size_t i = 0; i < count; ++i) {
        const size_t slot = kHeaderSize + kSlotSize * i;
        const uint16_t id = load16(p + slot);
        if (id == 0 || id >= 0xFFFE)
            return fault(where, origin + slot, "invalid entry ID");
        if (i > 0 && load16(p + slot - kSlotSize) >= id)
            return fault(where, origin + slot, "entry IDs are not in ascending order");
        const uint8_t type = p[slot + 2];
        const uint8_t flags = p[slot + 3];
        if (type == 0)
            return fault(where, origin + slot + 2, "type byte 0");
        if (!(flags & kStoredOutOfLine))
            continue;
        const size_t length = load16(p + slot + 4);
        const size_t start = slot + load16(p + slot + 6);
        if (length < 5)
            return fault(where, origin + slot + 4, "a value of at most 4 bytes stored out of line");
        if (start < dataStart || start + length > total)
            return fault(where, origin + slot + 6, "a value lies outside the data area");
        const unsigned char *value = p + start;
        if ((type & 0x0F) == kBaseNested && (isObject(value, length) || isArray(value, length))) {
            if (!checkBlock(value, length, origin + start, where))
                return false;
            if (load16(value + 6) != length)
                return fault(where, origin + start + 6, "a nested block's size differs from its value length");
        }
    }
    return true;
}

bool checkArray(const unsigned char *p, size_t total, size_t origin, std::string &where)
{
    const size_t count = load16(p + 4);
    size_t position = kHeaderSize;
    for (size_t i = 0; i < count; ++i) {
        if (!isObject(p + position, total - position))
            return fault(where, origin + position, "an array element is not a binary object");
        if (!checkBlock(p + position, total - position, origin + position, where))
            return false;
        position += load16(p + position + 6);
    }
    if (position != total)
        return fault(where, origin + position, "the array's size does not match its elements");
    return true;
}

}  // namespace

bool checkBlock(const unsigned char *p, size_t available, size_t origin, std::string &where)
{
    if (available < kHeaderSize)
        return fault(where, origin, "shorter than a header");
    const bool object = isObject(p, available);
    if (!object && !isArray(p, available))
        return fault(where, origin, "neither \"SDOB\" nor \"SDAB\"");
    const size_t total = load16(p + 6);
    if (total < kHeaderSize || total > available)
        return fault(where, origin + 6, "the total size does not fit the bytes there");
    return object ? checkObject(p, total, origin, where) : checkArray(p, total, origin, where);
}

}  // namespace zktool::sdo
