#include "config/registry_reader.h"

#include <cstdio>
#include <memory>

#include "file/stream.h"

namespace zksupt::config {
namespace {

bool isBlank(char c) noexcept
{
    return c == ' ' || c == '\t';
}

}  // namespace

std::optional<std::pair<std::string_view, std::string_view>> parseRegistryLine(std::string_view line) noexcept
{
    // A piece holding a NUL ends there, as it would for any C string reader.
    line = line.substr(0, line.find('\0'));
    std::size_t start = 0;
    while (start < line.size() && isBlank(line[start]))
        ++start;
    if (start < line.size() && (line[start] == ';' || line[start] == '#'))
        return std::nullopt;
    const std::size_t equals = line.find('=', start);
    if (equals == std::string_view::npos)
        return std::nullopt;
    std::string_view value = line.substr(equals + 1);
    while (!value.empty() && isBlank(value.front()))
        value.remove_prefix(1);
    if (!value.empty() && value.back() == '\n')
        value.remove_suffix(1);
    while (!value.empty() && isBlank(value.back()))
        value.remove_suffix(1);
    return std::pair{line.substr(start, equals - start), value};
}

bool Registry::load(const char *path)
{
    parse({});
    const file::Stream stream{path != nullptr ? std::fopen(path, "r") : nullptr};
    if (!stream)
        return false;
    std::string text;
    char chunk[8192];
    std::size_t got = 0;
    while ((got = std::fread(chunk, 1, sizeof chunk, stream.get())) > 0)
        text.append(chunk, got);
    if (std::ferror(stream.get()))
        return false;
    parse(std::move(text));
    return true;
}

void Registry::parse(std::string text)
{
    text_ = std::move(text);
    entries_.clear();
    std::string_view rest = text_;
    while (!rest.empty()) {
        // A piece ends after its line feed or at the length limit.
        const std::size_t feed = rest.substr(0, kRegistryLineLimit).find('\n');
        const std::size_t length =
            feed != std::string_view::npos ? feed + 1 : std::min(rest.size(), kRegistryLineLimit);
        if (auto entry = parseRegistryLine(rest.substr(0, length)))
            entries_.push_back(*entry);
        rest.remove_prefix(length);
    }
}

std::string_view Registry::find(std::string_view key) const noexcept
{
    for (const auto &[entryKey, value] : entries_) {
        if (entryKey == key)
            return value;
    }
    return {};
}

}  // namespace zksupt::config
