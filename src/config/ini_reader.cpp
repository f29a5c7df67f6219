#include "config/ini_reader.h"

#include <cstring>
#include <string_view>

#include <zksupt/status.h>

#include "config/line_reader.h"
#include "config/name_listing.h"
#include "frame/size_out.h"

namespace zksupt::config {
namespace {

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
    NameListing listing(buffer, *size);
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
        NameListing listing(buffer, *size);
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
