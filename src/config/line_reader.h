// Reads a text file as the INI engine sees it: in one buffered pass, in
// pieces of at most 8,449 bytes that end after their line feed when one
// comes first. A longer physical line is several pieces, each treated as a
// line of its own.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>

namespace zksupt::config {

inline constexpr std::size_t kIniLineLimit = 8449;

class LineReader {
  public:
    explicit LineReader(std::FILE *file) noexcept : file_(file) {}
    LineReader(const LineReader &) = delete;
    LineReader &operator=(const LineReader &) = delete;

    // The next piece, valid until the next call; false at the end of the
    // file or after a read error.
    bool next(std::string_view &piece) noexcept;
    bool failed() const noexcept { return failed_; }

  private:
    void refill() noexcept;

    std::FILE *file_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    bool atEnd_ = false;
    bool failed_ = false;
    char buffer_[4 * kIniLineLimit];
};

// The piece as C string code sees it: up to its first NUL byte.
std::string_view asText(std::string_view piece) noexcept;

// The section header on a line: optional spaces and tabs, '[', the name up
// to the first ']'.
struct Header {
    bool isHeader = false;   // the first non-blank character is '['
    bool malformed = false;  // ... but no ']' follows it
    std::string_view name;
};
Header parseHeader(std::string_view line) noexcept;

// The line without its leading spaces and tabs.
std::string_view skipBlanks(std::string_view line) noexcept;

}  // namespace zksupt::config
