#include "log/text_record.h"

#include <charconv>
#include <cstring>

#include "text_helpers/hex_dump.h"

namespace zksupt::log {
namespace {

constexpr std::string_view kRule = "#-------------------------------";

// The header's text after the byte-order mark.
constexpr std::array<std::string_view, 7> kHeaderText{
    kRule, "\r\n", "# Do not remove this block\r\n", "# This data file is parsed\r\n", kRule, " \r\n", "\r\n",
};

constexpr std::size_t headerTextLength()
{
    std::size_t length = 0;
    for (std::string_view piece : kHeaderText)
        length += piece.size();
    return length;
}
static_assert(2 * (1 + headerTextLength()) == kHeaderSize, "the header block is 128 units");

constexpr std::array<uint8_t, kHeaderSize> makeHeader()
{
    std::array<uint8_t, kHeaderSize> block{};
    block[0] = 0xFF;  // U+FEFF, little-endian
    block[1] = 0xFE;
    std::size_t at = 2;
    for (std::string_view piece : kHeaderText)
        for (char c : piece) {
            block[at++] = static_cast<uint8_t>(c);
            block[at++] = 0;
        }
    return block;
}

constexpr std::array<uint8_t, kHeaderSize> kHeader = makeHeader();

// Writes a record's units, or only counts them when it has no room.
class Units {
  public:
    explicit Units(ucs2 *out) noexcept : out_(out) {}

    void ascii(std::string_view text) noexcept
    {
        if (out_ != nullptr)
            for (std::size_t i = 0; i < text.size(); ++i)
                out_[count_ + i] = static_cast<uint8_t>(text[i]);
        count_ += text.size();
    }
    void wide(std::span<const ucs2> text) noexcept
    {
        if (out_ != nullptr && !text.empty())
            std::memcpy(out_ + count_, text.data(), text.size_bytes());
        count_ += text.size();
    }
    void hexDump(std::span<const uint8_t> data) noexcept
    {
        if (out_ != nullptr)
            text_helpers::hexDumpUcs2(data.data(), static_cast<uint32_t>(data.size()), 0, out_ + count_);
        count_ += text_helpers::hexDumpLength(static_cast<uint32_t>(data.size()));
    }
    std::size_t count() const noexcept { return count_; }

  private:
    ucs2 *out_;
    std::size_t count_ = 0;
};

constexpr std::string_view kLineEnd = "\r\n";

void writeRecord(Units &units, const TextRecord &record) noexcept
{
    char id[16];
    const std::to_chars_result idText = std::to_chars(id, id + sizeof id, record.eventId);
    units.ascii("EventID: ");
    units.ascii({id, idText.ptr});
    units.ascii(kLineEnd);
    units.ascii("Source: ");
    units.wide(record.source);
    units.ascii(kLineEnd);
    units.ascii("Category: ");
    units.ascii(record.category);
    units.ascii(kLineEnd);
    units.ascii(record.typeLine);
    units.ascii(kLineEnd);
    units.ascii("Date and Time: ");
    units.ascii(record.time);
    units.ascii(kLineEnd);
    units.ascii("Computer: ");
    units.wide(record.computer);
    units.ascii(kLineEnd);
    units.ascii("Description:\r\n");
    units.wide(record.description);
    units.ascii(kLineEnd);
    units.ascii("Data: Bytes in Hex\r\n");
    units.hexDump(record.data);
    units.ascii(kLineEnd);
}

}  // namespace

const std::array<uint8_t, kHeaderSize> &headerBlock() noexcept
{
    return kHeader;
}

EncodedRecord encodeRecord(const TextRecord &record) noexcept
{
    Units counting(nullptr);
    writeRecord(counting, record);
    EncodedRecord encoded{frame::allocateOwned<ucs2[]>(counting.count() * sizeof(ucs2)),
                          counting.count() * sizeof(ucs2)};
    if (encoded.units != nullptr) {
        Units writing(encoded.units.get());
        writeRecord(writing, record);
    }
    return encoded;
}

uint64_t estimatedRecordSize(uint32_t sourceUnits, uint32_t descriptionUnits, uint32_t dataLength) noexcept
{
    return 2 * (uint64_t{sourceUnits} + descriptionUnits + 1024 + 83 * (uint64_t{dataLength} / 16 + 1));
}

}  // namespace zksupt::log
