#include "config/ini_reader.h"

#include <cstring>
#include <string_view>

#include <zksupt/status.h>

#include "config/line_reader.h"
#include "frame/size_out.h"

namespace zksupt::config {
namespace {

// Names gathered into the caller's buffer for as long as they fit; the
// count of bytes needed goes on after the first that does not.
class Listing {
  public:
    Listing(char *buffer, uint32_t capacity) noexcept : buffer_(buffer), capacity_(capacity) {}

    void add(std::string_view name) noexcept
    {
        const uint64_t at = needed_ - 1;
        needed_ += name.size() + 1;
        fits_ = fits_ && needed_ <= capacity_;
        if (fits_) {
            std::memcpy(buffer_ + at, name.data(), name.size());
            buffer_[at + name.size()] = '\0';
        }
        ++count_;
    }

    int32_t finish(uint32_t *size, int32_t whenEmpty) const noexcept
    {
        if (count_ == 0) {
            *size = 0;
            return whenEmpty;
        }
        *size = needed_ > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(needed_);
        if (!fits_)
            return SM_STATUS_BUFFER_TOO_SMALL;
        buffer_[needed_ - 1] = '\0';
        return SM_STATUS_SUCCESS;
    }

  private:
    char *buffer_;
    uint64_t capacity_;
    uint64_t needed_ = 1;
    uint64_t count_ = 0;
    bool fits_ = true;
};

int32_t endOfFile(const LineReader &lines, int32_t status) noexcept
{
    return lines.failed() ? SM_STATUS_BAD_SECTION_HEADER : status;
}

// Reads up to the header of section: 0, 0x105 or 0x106.
int32_t findSection(LineReader &lines, std::string_view section) noexcept
{
    std::string_view piece;
    while (lines.next(piece)) {
        const Header header = parseHeader(piece);
        if (header.malformed)
            return SM_STATUS_BAD_SECTION_HEADER;
        if (header.isHeader && header.name == section)
            return SM_STATUS_SUCCESS;
    }
    return endOfFile(lines, SM_STATUS_SECTION_NOT_FOUND);
}

// The next key line of the current section, as the text from its first
// non-blank character: false at the section's end (*status 0x107) or the
// file's. Comments are marked only by ';' or '#' in the first column.
bool nextKeyLine(LineReader &lines, std::string_view &line, std::size_t &equals, int32_t &status) noexcept
{
    std::string_view piece;
    while (lines.next(piece)) {
        const std::string_view text = asText(piece);
        if (!text.empty() && (text.front() == ';' || text.front() == '#'))
            continue;
        line = skipBlanks(text);
        if (!line.empty() && line.front() == '[')
            break;
        equals = line.find('=');
        if (equals != std::string_view::npos)
            return true;
    }
    status = endOfFile(lines, SM_STATUS_KEY_NOT_FOUND);
    return false;
}

int32_t listSections(LineReader &lines, char *buffer, uint32_t *size) noexcept
{
    Listing listing(buffer, *size);
    std::string_view piece;
    while (lines.next(piece)) {
        const Header header = parseHeader(piece);
        if (header.malformed) {
            *size = 0;
            return SM_STATUS_BAD_SECTION_HEADER;
        }
        if (header.isHeader)
            listing.add(header.name);
    }
    if (lines.failed()) {
        *size = 0;
        return SM_STATUS_BAD_SECTION_HEADER;
    }
    return listing.finish(size, SM_STATUS_SECTION_NOT_FOUND);
}

}  // namespace

int32_t scanIni(std::FILE *file, const char *section, const char *key, char *buffer, uint32_t *size) noexcept
{
    LineReader lines(file);
    if (section == nullptr)
        return listSections(lines, buffer, size);
    int32_t status = findSection(lines, section);
    std::string_view line;
    std::size_t equals = 0;
    if (status == SM_STATUS_SUCCESS && key == nullptr) {
        Listing listing(buffer, *size);
        while (nextKeyLine(lines, line, equals, status))
            listing.add(line.substr(0, equals));
        if (status == SM_STATUS_KEY_NOT_FOUND)
            return listing.finish(size, SM_STATUS_KEY_NOT_FOUND);
    } else if (status == SM_STATUS_SUCCESS) {
        while (nextKeyLine(lines, line, equals, status)) {
            if (line.substr(0, equals) != key)
                continue;
            const std::string_view value = line.substr(equals + 1);
            return frame::copyOutText(buffer, size, value.substr(0, value.find('\n')));
        }
    }
    *size = 0;
    return status;
}

}  // namespace zksupt::config
