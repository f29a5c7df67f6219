// Hex dumps of binary data, one 81-character line per 16 bytes.
#include "text_helpers/hex_dump.h"

#include <algorithm>
#include <array>
#include <cstring>

#include <zksupt/status.h>

#include "text_helpers/hex_digits.h"
#include "text_helpers/sized_string.h"
#include "text/utf8_string.h"

namespace zksupt::text_helpers {
namespace {

constexpr std::size_t kLineBytes = 16;
constexpr std::size_t kLineLength = kHexDumpLineLength;
constexpr std::size_t kFirstByteColumn = 12;
constexpr std::size_t kFirstCharColumn = 62;
constexpr uint32_t kWorkCapacity = 2048;

using Line = std::array<char, kLineLength>;

// '{', '|', '}', '~' and DEL upwards print as '.' too: readers of the suite's
// dumps have always seen them so.
constexpr char shown(uint8_t byte) noexcept
{
    return byte >= 0x20 && byte <= 0x7A ? static_cast<char>(byte) : '.';
}

void formatLine(Line &line, const uint8_t *run, std::size_t count, uint32_t address) noexcept
{
    line.fill(' ');
    line[0] = '0';
    line[1] = 'x';
    writeHexDigits(line.data() + 2, address, 8);
    line[10] = ':';
    line[kLineLength - 2] = '\r';
    line[kLineLength - 1] = '\n';
    for (std::size_t j = 0; j < count; ++j) {
        char *column = line.data() + kFirstByteColumn + 3 * j;
        if (j != 0 && j % 4 == 0)
            column[-1] = ':';
        writeHexDigits(column, run[j], 2);
        line[kFirstCharColumn + j] = shown(run[j]);
    }
}

}  // namespace

int32_t hexDumpAppend(SMSizedString *dst, const uint8_t *data, uint32_t len, uint32_t base) noexcept
{
    if (data == nullptr || len == 0)
        return SM_STATUS_SUCCESS;
    Line line;
    for (uint32_t offset = 0; offset < len; offset += kLineBytes) {
        const std::size_t count = std::min<std::size_t>(kLineBytes, len - offset);
        formatLine(line, data + offset, count, base + offset);
        if (!appendUtf8(dst, line.data(), kLineLength))
            return SM_STATUS_FAILURE;
    }
    return SM_STATUS_SUCCESS;
}

void hexDumpUcs2(const uint8_t *data, uint32_t len, uint32_t base, ucs2 *out) noexcept
{
    if (data == nullptr)
        return;
    Line line;
    for (uint32_t offset = 0; offset < len; offset += kLineBytes) {
        const std::size_t count = std::min<std::size_t>(kLineBytes, len - offset);
        formatLine(line, data + offset, count, base + offset);
        out = std::copy(line.begin(), line.end(), out);
    }
}

char *hexDumpText(const uint8_t *data, uint32_t *len, uint32_t base) noexcept
{
    if (len == nullptr)
        return nullptr;
    OwnedSizedString work;
    if (sizedAllocUtf8(work.get(), kWorkCapacity) == nullptr ||
        hexDumpAppend(work.get(), data, *len, base) != SM_STATUS_SUCCESS)
        return nullptr;
    return text::utf8Duplicate(static_cast<const char *>(work->buf), len);
}

}  // namespace zksupt::text_helpers
