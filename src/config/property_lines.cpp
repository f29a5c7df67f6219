#include "config/property_lines.h"

namespace zksupt::config {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kSeparators = "\n\t\r :=";

std::string_view trimEnd(std::string_view text) noexcept
{
    const std::size_t last = text.find_last_not_of(kBlanks);
    return last == std::string_view::npos ? std::string_view{} : text.substr(0, last + 1);
}

bool continues(std::string_view value) noexcept
{
    return !value.empty() && value.back() == '\\' && (value.size() < 2 || value[value.size() - 2] != '\\');
}

bool isComment(std::string_view line) noexcept
{
    return line.front() == ';' || line.front() == '#' || line.front() == '!' || line.starts_with("//");
}

}  // namespace

bool PropertyLines::nextPiece(std::string_view &piece) noexcept
{
    if (!lines_.next(piece))
        return false;
    offset_ += piece.size();
    piece = asText(piece);
    return true;
}

bool PropertyLines::next(PropertyEntry &entry)
{
    std::string_view line;
    for (;;) {
        entry.start = offset_;
        if (!nextPiece(line))
            return false;
        if (!line.empty() && line.back() == '\n')
            line.remove_suffix(1);
        const std::size_t first = line.find_first_not_of(kBlanks);
        line.remove_prefix(first == std::string_view::npos ? line.size() : first);
        if (line.size() < 2 || isComment(line))
            continue;
        const std::size_t keyEnd = line.find_first_of(kSeparators);
        if (keyEnd == 0)
            continue;
        const std::string_view key = line.substr(0, keyEnd);
        const std::string_view rest = keyEnd == std::string_view::npos ? std::string_view{} : line.substr(keyEnd);
        const std::size_t valueStart = rest.find_first_not_of(kSeparators);
        entry.key.assign(key);
        entry.value.assign(
            trimEnd(valueStart == std::string_view::npos ? std::string_view{} : rest.substr(valueStart)));
        break;
    }
    while (continues(entry.value)) {
        entry.value.back() = '\n';
        std::string_view more;
        if (!nextPiece(more))
            break;
        entry.value.append(trimEnd(more));
    }
    entry.end = offset_;
    return true;
}

bool propertyKeyMatches(std::string_view lineKey, std::string_view wanted) noexcept
{
    return wanted.substr(0, lineKey.size()) == lineKey;
}

}  // namespace zksupt::config
