#include "config/line_reader.h"

#include <algorithm>
#include <cstring>

namespace zksupt::config {

void LineReader::refill() noexcept
{
    std::memmove(buffer_, buffer_ + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
    while (!atEnd_ && end_ < sizeof buffer_) {
        const std::size_t got = std::fread(buffer_ + end_, 1, sizeof buffer_ - end_, file_);
        end_ += got;
        if (got == 0) {
            atEnd_ = true;
            failed_ = std::ferror(file_) != 0;
        }
    }
}

bool LineReader::next(std::string_view &piece) noexcept
{
    const char *start = buffer_ + begin_;
    std::size_t available = end_ - begin_;
    const char *feed = static_cast<const char *>(std::memchr(start, '\n', std::min(available, kIniLineLimit)));
    if (feed == nullptr && available < kIniLineLimit && !atEnd_) {
        refill();
        start = buffer_;
        available = end_;
        feed = static_cast<const char *>(std::memchr(start, '\n', std::min(available, kIniLineLimit)));
    }
    if (available == 0 || failed_)
        return false;
    const std::size_t length =
        feed != nullptr ? static_cast<std::size_t>(feed - start) + 1 : std::min(available, kIniLineLimit);
    piece = {start, length};
    begin_ += length;
    return true;
}

std::string_view asText(std::string_view piece) noexcept
{
    return piece.substr(0, piece.find('\0'));
}

std::string_view skipBlanks(std::string_view line) noexcept
{
    const std::size_t first = line.find_first_not_of(" \t");
    return first == std::string_view::npos ? std::string_view{} : line.substr(first);
}

Header parseHeader(std::string_view line) noexcept
{
    Header header;
    // Blanks end at a NUL too, so the NUL that ends the text is looked for
    // only on the few lines that are headers.
    std::string_view text = skipBlanks(line);
    if (text.empty() || text.front() != '[')
        return header;
    text = asText(text);
    header.isHeader = true;
    const std::size_t close = text.find(']');
    if (close == std::string_view::npos)
        header.malformed = true;
    else
        header.name = text.substr(1, close - 1);
    return header;
}

}  // namespace zksupt::config
