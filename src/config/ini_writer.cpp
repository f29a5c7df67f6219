// Writing INI values: a copy of the file with one change replaces it, or a
// new section is appended.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>

#include <zksupt/status.h>

#include "config/file_guard.h"
#include "config/ini.h"
#include "config/ini_values.h"
#include "config/line_reader.h"
#include "config/replace_file.h"
#include "file/descriptor.h"
#include "file/operations.h"

namespace zksupt::config {
namespace {

// The line of a value.
std::string keyLine(std::string_view key, std::string_view value)
{
    std::string line;
    line.reserve(key.size() + value.size() + 2);
    return line.append(key).append(1, '=').append(value).append(1, '\n');
}

bool writeAll(int fd, std::string_view bytes) noexcept
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// Adds the section with its one key at the end of the file, making the file
// when there is none. An earlier file keeps its permission bits.
int32_t appendSection(const std::string &path, const char *section, const char *key, const char *value, bool existed)
{
    if (key == nullptr || value == nullptr)
        return SM_STATUS_BAD_LENGTH;
    const file::Descriptor fd{::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, kNewFileMode)};
    if (!fd)
        return SM_STATUS_FILE_NOT_FOUND;
    struct stat old {};
    const bool known = ::fstat(fd.get(), &old) == 0;
    ::fchmod(fd.get(), existed && known ? (old.st_mode & kKeptModeBits) : kNewFileMode);
    std::string text = known && old.st_size > 0 ? "\n[" : "[";
    text.append(section).append("]\n").append(keyLine(key, value));
    return writeAll(fd.get(), text) ? SM_STATUS_SUCCESS : SM_STATUS_LIMIT_REACHED;
}

// The copy of the file with one value written, replaced or deleted, or one
// section deleted.
class ValueRewriter final : public Rewriter {
  public:
    ValueRewriter(const char *section, const char *key, const char *value) noexcept
        : section_(section), key_(key), value_(value)
    {
    }

    Rewrite rewrite(std::FILE *in, std::FILE *out) noexcept override
    {
        try {
            LineReader lines(in);
            out_ = out;
            const int32_t status = copyToSection(lines);
            if (status != SM_STATUS_SUCCESS)
                return {status, status != SM_STATUS_SECTION_NOT_FOUND};
            const bool read = key_ == nullptr ? dropSection(lines) : replaceKey(lines);
            return {read ? SM_STATUS_SUCCESS : SM_STATUS_BAD_SECTION_HEADER, true};
        } catch (...) {
            return {SM_STATUS_NO_MEMORY, false};
        }
    }

  private:
    // Write failures show on the stream; the replacement checks it at close.
    void put(std::string_view bytes) noexcept
    {
        if (!bytes.empty())
            lineEnded_ = bytes.back() == '\n';
        std::fwrite(bytes.data(), 1, bytes.size(), out_);
    }

    // Copies the lines before the section's header; the header too when a
    // key is written.
    int32_t copyToSection(LineReader &lines) noexcept
    {
        std::string_view piece;
        while (lines.next(piece)) {
            const Header header = parseHeader(piece);
            if (header.malformed) {
                put(piece);
                return SM_STATUS_BAD_SECTION_HEADER;
            }
            if (header.isHeader && header.name == section_) {
                if (key_ != nullptr)
                    put(piece);
                return SM_STATUS_SUCCESS;
            }
            put(piece);
        }
        return lines.failed() ? SM_STATUS_BAD_SECTION_HEADER : SM_STATUS_SECTION_NOT_FOUND;
    }

    // Drops the section's lines up to the first that starts with '[' or '#'
    // in its first column, and copies the rest. A ';' comment goes with the
    // section; a '#' line ends it.
    bool dropSection(LineReader &lines) noexcept
    {
        std::string_view piece;
        bool copying = false;
        while (lines.next(piece)) {
            copying = copying || piece.front() == '[' || piece.front() == '#';
            if (copying)
                put(piece);
        }
        return !lines.failed();
    }

    // Walks the section for the key. Blank and comment lines are held back,
    // so that a new key lands before the blank lines that close the section.
    bool replaceKey(LineReader &lines)
    {
        std::string held;
        std::string_view piece;
        while (lines.next(piece)) {
            const std::string_view text = asText(piece);
            const std::size_t first = text.find_first_not_of(" \t\r\n");
            if (first == std::string_view::npos || text[first] == ';' || text[first] == '#') {
                held.append(piece);
                continue;
            }
            if (text[first] == '[') {
                // After a held-back run the header stays. Directly after a
                // key line it gives way to the new line: files this engine
                // wrote always have a blank line before each later header,
                // and the files in the field were written with that rule.
                if (!held.empty())
                    held.append(piece);
                break;
            }
            put(held);
            held.clear();
            const std::string_view line = skipBlanks(text);
            if (line.substr(0, line.find_first_of("=\n")) == key_)
                break;
            put(piece);
        }
        if (lines.failed())
            return false;
        if (value_ != nullptr) {
            // A last line without its line feed is ended first, or the new
            // line would run on from it.
            if (!lineEnded_)
                put("\n");
            put(keyLine(key_, value_));
        }
        put(held);
        while (lines.next(piece))
            put(piece);
        return !lines.failed();
    }

    const char *section_;
    const char *key_;
    const char *value_;
    std::FILE *out_ = nullptr;
    bool lineEnded_ = true;  // whether the last byte copied ends a line
};

// Writes text (null deletes) under the file's lock.
int32_t writeText(const char *section, const char *key, const char *value, const char *pathText, int16_t lockWait)
{
    const std::string path = pathText;
    if (path.back() == '/')
        return SM_STATUS_BAD_ARGUMENT;
    if (path.find('/') != std::string::npos && file::makeDirectory(directoryOf(path).c_str()) != SM_STATUS_SUCCESS)
        return SM_STATUS_FAILURE;
    const FileGuard guard(pathText, FileAccess::write, lockWait);
    if (guard.status() != SM_STATUS_SUCCESS)
        return guard.status();
    if (const int32_t recovered = recoverBackup(pathText); recovered != SM_STATUS_SUCCESS)
        return recovered;
    if (!file::entryExists(pathText))
        return appendSection(path, section, key, value, false);
    ValueRewriter rewriter(section, key, value);
    const int32_t status = replaceFile(path, rewriter);
    return status == SM_STATUS_SECTION_NOT_FOUND ? appendSection(path, section, key, value, true) : status;
}

}  // namespace

int32_t writeValue(const char *section, const char *key, uint32_t type, const void *value, uint32_t size,
                   const char *path, int16_t lockWait) noexcept
{
    if (section == nullptr || std::strlen(section) > kIniNameLimit || path == nullptr || *path == '\0' ||
        (key != nullptr && std::strlen(key) > kIniNameLimit) || type < kIniText || type > kIniDouble ||
        (key == nullptr && type != kIniText))
        return SM_STATUS_BAD_ARGUMENT;
    try {
        if (value == nullptr && size == 0)
            return writeText(section, key, nullptr, path, lockWait);
        if (type == kIniText) {
            const auto *text = static_cast<const char *>(value);
            if (text == nullptr || size > kIniTextLimit || size == 0 || strnlen(text, size) != size - 1)
                return SM_STATUS_BAD_LENGTH;
            return writeText(section, key, text, path, lockWait);
        }
        std::string text;
        const int32_t status = encodeIniValue(type, value, size, text);
        if (status != SM_STATUS_SUCCESS)
            return status;
        // A line longer than a reader takes at once would come back in
        // pieces, never as this value, and its tail would outlive a later
        // rewrite as a line of its own. Text values always fit.
        if (std::strlen(key) + text.size() + 2 > kIniLineLimit)
            return SM_STATUS_BAD_LENGTH;
        return writeText(section, key, text.c_str(), path, lockWait);
    } catch (...) {
        return SM_STATUS_NO_MEMORY;
    }
}

}  // namespace zksupt::config
