// The key lines of a property file, as every property-file call reads them:
// flat "key=value" text without sections, read in the INI engine's pieces
// of at most 8,449 bytes.
//
// A line is trimmed of its line feed and of leading line feeds, tabs,
// carriage returns and blanks. Lines of fewer than 2 characters, and lines
// that begin with ';', '#', '!' or "//", are skipped. The key runs to the
// first line feed, tab, carriage return, blank, ':' or '=', and the whole
// run of those characters after it separates it from the value ("a : = b"
// is the key a and the value b). The value is trimmed of blanks, tabs, CR
// and LF at its end. A value that ends in a single backslash goes on in the
// next line: the backslash becomes a line feed, and the next line follows
// with only its end trimmed. Two backslashes at the end stay as they are.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "config/line_reader.h"

namespace zksupt::config {

struct PropertyEntry {
    std::string key;
    std::string value;
    uint64_t start = 0;  // offset of the key line in the file
    uint64_t end = 0;    // offset after its last continuation line
};

class PropertyLines {
  public:
    explicit PropertyLines(std::FILE *file) noexcept : lines_(file) {}

    // The next key line with its value; false at the end of the file or
    // after a read error. Throws std::bad_alloc when the value cannot grow.
    bool next(PropertyEntry &entry);
    bool failed() const noexcept { return lines_.failed(); }

  private:
    bool nextPiece(std::string_view &piece) noexcept;

    LineReader lines_;
    uint64_t offset_ = 0;
};

// Whether a line's key selects the wanted key: only as many bytes as the
// line's key has are compared, so the line key "p" selects "port". The
// suite's files have always been read this way, and it is kept.
bool propertyKeyMatches(std::string_view lineKey, std::string_view wanted) noexcept;

}  // namespace zksupt::config
