// The XML buffer writer.
#include "xml/writer.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>

#include <zksupt/status.h>

#include "frame/memory.h"
#include "frame/owned.h"
#include "frame/unaligned.h"
#include "sdo/type_text.h"
#include "text/convert.h"
#include "text_helpers/sized_string.h"

namespace zksupt::xml {
namespace {

constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
constexpr uint32_t kMinimumCapacity = 64;
constexpr uint32_t kMostEscapes = 16;

// Value types beyond the translation's codes: a string behind a pointer.
constexpr uint32_t kUtf8Pointer = 48;
constexpr uint32_t kUcs2Pointer = 49;
constexpr uint32_t kUtf8PointerToo = 50;
constexpr uint32_t kFirstUnknownType = 51;

using Text = frame::Owned<char>;

void append(SMXGBuf *buffer, std::string_view s) noexcept
{
    if (!s.empty())
        text_helpers::appendUtf8(buffer, s.data(), static_cast<uint32_t>(s.size()));
}

// The first text buffer for a translated type; 0 lets the translation report
// the size; -1 marks a type the writer does not take.
int64_t firstTextSize(uint32_t type, const void *value, uint32_t size) noexcept
{
    switch (type) {
    case sdo::kTypeBoolean:
        // A shorter value is refused by the translation.
        return size >= sizeof(uint16_t) && frame::loadAs<uint16_t>(value) == 1 ? 5 : 6;
    case 1:
    case 2:
    case 3:
    case 33:
    case 34:
        return 17;
    case 4:
    case 35:
        return 33;
    case 5:
    case 6:
    case 7:
    case 10:
    case 37:
    case 38:
        return 16;
    case 8:
    case 9:
    case 39:
    case 40:
        return 32;
    case sdo::kTypeTime:
        return 64;
    case sdo::kTypeBytes:
        return 0;
    default:
        return -1;
    }
}

// One escaping pass over length bytes: runs without specials are appended whole.
Text escapeOnce(const char *s, uint32_t length, uint32_t capacity, uint32_t *produced) noexcept
{
    text_helpers::OwnedSizedString out;
    if (text_helpers::sizedAllocUtf8(out.get(), std::max<uint32_t>(capacity, 1)) == nullptr)
        return nullptr;
    const char *run = s;
    const char *const end = s + length;
    bool ok = true;
    for (const char *p = s; p < end && ok; ++p) {
        std::string_view entity;
        switch (*p) {
        case '&':
            entity = "&amp;";
            break;
        case '<':
            entity = "&lt;";
            break;
        case '>':
            entity = "&gt;";
            break;
        case '"':
            entity = "&quot;";
            break;
        case '\'':
            entity = "&apos;";
            break;
        default:
            continue;
        }
        ok = (p == run || text_helpers::appendUtf8(out.get(), run, static_cast<uint32_t>(p - run))) &&
             text_helpers::appendUtf8(out.get(), entity.data(), static_cast<uint32_t>(entity.size()));
        run = p + 1;
    }
    if (ok && run < end)
        ok = text_helpers::appendUtf8(out.get(), run, static_cast<uint32_t>(end - run));
    if (!ok)
        return nullptr;
    *produced = out->length;
    return Text{static_cast<char *>(out.release())};
}

// count passes, each over the one before; *length in and out.
Text escapeTimes(const char *s, uint32_t *length, uint32_t capacity, uint32_t count) noexcept
{
    Text result = escapeOnce(s, *length, capacity, length);
    for (uint32_t pass = 1; pass < count && result != nullptr; ++pass)
        result = escapeOnce(result.get(), *length, *length, length);
    return result;
}

// A string value, escaped as the options ask (or as it is when escaping fails).
void appendString(SMXGBuf *buffer, const char *s, uint32_t length, const SMXGValueOptions *options) noexcept
{
    if (options != nullptr && options->escapeCount != 0) {
        uint32_t escapedLength = length;
        const Text escaped =
            escapeTimes(s, &escapedLength, length + 1, std::min<uint32_t>(options->escapeCount, kMostEscapes));
        if (escaped != nullptr) {
            append(buffer, {escaped.get(), escapedLength});
            return;
        }
    }
    append(buffer, {s, length});
}

int32_t appendUcs2(SMXGBuf *buffer, const ucs2 *units, const SMXGValueOptions *options) noexcept
{
    uint32_t need = 0;
    if (text::ucs2ToUtf8(nullptr, &need, units) != SM_STATUS_SUCCESS)
        return SM_STATUS_FAILURE;
    const Text utf8 = frame::allocateOwned<char>(need);
    if (utf8 == nullptr || text::ucs2ToUtf8(utf8.get(), &need, units) != SM_STATUS_SUCCESS)
        return SM_STATUS_FAILURE;
    appendString(buffer, utf8.get(), need - 1, options);
    return SM_STATUS_SUCCESS;
}

// Every other type through the translation: one retry at the size it reports.
int32_t appendTranslated(SMXGBuf *buffer, const void *value, uint32_t size, uint32_t type,
                         const SMXGValueOptions *options) noexcept
{
    const int64_t first = firstTextSize(type, value, size);
    if (first < 0)
        return SM_STATUS_FAILURE;
    const uint32_t word = type | (options == nullptr ? 0u : options->formatFlags);
    auto capacity = static_cast<uint32_t>(first);
    Text work = frame::allocateOwned<char>(std::max<uint32_t>(capacity, 1));
    if (work == nullptr)
        return SM_STATUS_NO_MEMORY;
    int32_t status = sdo::typeValueToText(value, size, work.get(), &capacity, word);
    if (status == SM_STATUS_BUFFER_TOO_SMALL) {
        work = frame::allocateOwned<char>(capacity);
        if (work == nullptr)
            return SM_STATUS_NO_MEMORY;
        status = sdo::typeValueToText(value, size, work.get(), &capacity, word);
    }
    if (status == SM_STATUS_SUCCESS)
        append(buffer, {work.get(), capacity - 1});
    return status;
}

int32_t openTag(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes, std::string_view close) noexcept
{
    if (buffer == nullptr || name == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    append(buffer, "<");
    append(buffer, name);
    if (attributes != nullptr && attributes->buf != nullptr && attributes->length != 0) {
        append(buffer, " ");
        append(buffer, {static_cast<const char *>(attributes->buf), attributes->length});
    }
    append(buffer, close);
    return SM_STATUS_SUCCESS;
}

}  // namespace

SMXGBuf *allocBuffer(uint32_t capacity, int32_t declaration) noexcept
{
    frame::Owned<SMXGBuf> buffer = frame::allocateOwned<SMXGBuf>(sizeof(SMXGBuf));
    if (buffer == nullptr)
        return nullptr;
    *buffer = SMXGBuf{};
    if (reallocContent(buffer.get(), std::max(capacity, kMinimumCapacity), declaration) == nullptr)
        return nullptr;
    return buffer.release();
}

char *reallocContent(SMXGBuf *buffer, uint32_t capacity, int32_t declaration) noexcept
{
    if (buffer == nullptr)
        return nullptr;
    text_helpers::sizedFree(buffer);
    if (text_helpers::sizedAllocUtf8(buffer, capacity) == nullptr)
        return nullptr;
    if (declaration == 1)
        append(buffer, kDeclaration);
    return static_cast<char *>(buffer->buf);
}

SMXGBuf *freeBuffer(SMXGBuf *buffer) noexcept
{
    if (buffer != nullptr) {
        text_helpers::sizedFree(buffer);
        frame::release(buffer);
    }
    return nullptr;
}

char *freeKeepContent(SMXGBuf *buffer) noexcept
{
    if (buffer == nullptr)
        return nullptr;
    auto *content = static_cast<char *>(buffer->buf);
    frame::release(buffer);
    return content;
}

void freeContent(char *content) noexcept
{
    frame::release(content);
}

int32_t beginNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes) noexcept
{
    return openTag(buffer, name, attributes, ">");
}

int32_t emptyNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes) noexcept
{
    return openTag(buffer, name, attributes, " />");
}

int32_t endNode(SMXGBuf *buffer, const char *name) noexcept
{
    if (buffer == nullptr || name == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    append(buffer, "</");
    append(buffer, name);
    append(buffer, ">");
    return SM_STATUS_SUCCESS;
}

int32_t attribute(SMXGBuf *buffer, const char *name, const void *value, uint32_t size, uint32_t type,
                  const SMXGValueOptions *options) noexcept
{
    if (buffer == nullptr || name == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (buffer->length != 0)
        append(buffer, " ");
    append(buffer, name);
    append(buffer, "=\"");
    const int32_t status = nodeValue(buffer, value, size, type, options);
    append(buffer, "\"");
    return status;
}

int32_t nodeValue(SMXGBuf *buffer, const void *value, uint32_t size, uint32_t type,
                  const SMXGValueOptions *options) noexcept
{
    if (buffer == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (value == nullptr)
        return SM_STATUS_NOT_FOUND;
    if (type >= kFirstUnknownType)
        return SM_STATUS_FAILURE;
    if (type == kUtf8Pointer || type == kUtf8PointerToo || type == kUcs2Pointer) {
        value = frame::loadAs<const void *>(value);
        if (value == nullptr)
            return SM_STATUS_NOT_FOUND;
    }
    if (type == sdo::kTypeUcs2 || type == kUcs2Pointer)
        return appendUcs2(buffer, static_cast<const ucs2 *>(value), options);
    if (type == sdo::kTypeUtf8 || type == kUtf8Pointer || type == kUtf8PointerToo) {
        const auto *s = static_cast<const char *>(value);
        appendString(buffer, s, size != 0 ? size - 1 : static_cast<uint32_t>(std::strlen(s)), options);
        return SM_STATUS_SUCCESS;
    }
    return appendTranslated(buffer, value, size, type, options);
}

int32_t node(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes, const void *value, uint32_t size,
             uint32_t type, const SMXGValueOptions *options) noexcept
{
    if (const int32_t status = beginNode(buffer, name, attributes); status != SM_STATUS_SUCCESS)
        return status;
    const int32_t status = nodeValue(buffer, value, size, type, options);
    // A failed value leaves the element open on purpose: the caller discards the buffer.
    if (status != SM_STATUS_SUCCESS && status != SM_STATUS_NOT_FOUND)
        return status;
    return endNode(buffer, name);
}

char *escapeText(const char *text, uint32_t *size, uint32_t count) noexcept
{
    if (text == nullptr || size == nullptr || count == 0)
        return nullptr;
    uint32_t length = static_cast<uint32_t>(std::strlen(text));
    Text escaped = escapeTimes(text, &length, *size, std::min(count, kMostEscapes));
    if (escaped != nullptr)
        *size = length;
    return escaped.release();
}

}  // namespace zksupt::xml
