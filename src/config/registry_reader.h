// The product registry file: lines of "short name.path kind=directory".
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zksupt::config {

// A registry line is read in pieces of at most this many characters; each
// piece counts as a line of its own.
inline constexpr std::size_t kRegistryLineLimit = 8450;

// One key line: the key from its first non-blank character up to the first
// '=' (blanks before the '=' belong to it), and the value after the '=' with
// leading blanks and tabs skipped, the line feed and then trailing blanks and
// tabs removed. Comments (';' or '#' after leading blanks) and lines without
// '=' give nothing.
std::optional<std::pair<std::string_view, std::string_view>> parseRegistryLine(std::string_view line) noexcept;

// The lines of one reading of the registry file. Lookups scan them in file
// order, so the first matching line wins, as it always has.
class Registry {
  public:
    // Reads and parses the whole file. False when it cannot be opened or
    // read; the registry is then empty. Allocation failure throws.
    bool load(const char *path);
    // Parses text as the file's contents.
    void parse(std::string text);

    // The value of key, or an empty view when no line has it: an empty value
    // counts as absent.
    std::string_view find(std::string_view key) const noexcept;

  private:
    std::string text_;
    std::vector<std::pair<std::string_view, std::string_view>> entries_;
};

}  // namespace zksupt::config
