// Writing property files: the file copied with one line replaced, through
// the replacement every data file of the library goes through.
#include <cstring>
#include <string>

#include <zksupt/status.h>

#include "config/file_guard.h"
#include "config/property_file.h"
#include "config/property_lines.h"
#include "config/replace_file.h"
#include "frame/owned.h"
#include "sdo/type_text.h"

namespace zksupt::config {
namespace {

// The text of most values fits the first buffer; a longer one learns its
// size from the first try, and a fixed-width form that asks for its least
// capacity first may need one try more.
constexpr uint32_t kFirstTextSize = 64;
constexpr int kTextAttempts = 3;

// The value's text form.
int32_t valueText(const void *value, uint32_t valueSize, uint32_t type, std::string &text)
{
    uint32_t size = kFirstTextSize;
    int32_t status = SM_STATUS_BUFFER_TOO_SMALL;
    for (int attempt = 0; attempt < kTextAttempts && status == SM_STATUS_BUFFER_TOO_SMALL; ++attempt) {
        const frame::Owned<char> buffer = frame::allocateOwned<char>(size);
        if (buffer == nullptr)
            return SM_STATUS_NO_MEMORY;
        uint32_t produced = size;
        status = sdo::typeValueToText(value, valueSize, buffer.get(), &produced, type);
        if (status == SM_STATUS_SUCCESS)
            text.assign(buffer.get(), strnlen(buffer.get(), size));
        size = produced;
    }
    return status;
}

// Copies count bytes of in, from where it stands, to out.
bool copyBytes(std::FILE *in, std::FILE *out, uint64_t count) noexcept
{
    char chunk[16 * 1024];
    while (count > 0) {
        const std::size_t want = count < sizeof chunk ? static_cast<std::size_t>(count) : sizeof chunk;
        const std::size_t got = std::fread(chunk, 1, want, in);
        if (got == 0)
            return false;
        std::fwrite(chunk, 1, got, out);
        count -= got;
    }
    return true;
}

bool copyRest(std::FILE *in, std::FILE *out) noexcept
{
    char chunk[16 * 1024];
    std::size_t got = 0;
    while ((got = std::fread(chunk, 1, sizeof chunk, in)) > 0)
        std::fwrite(chunk, 1, got, out);
    return std::ferror(in) == 0;
}

// The copy: the bytes before the first line that selects the key, the new
// line, and the bytes after that value's last continuation line. Without
// such a line nothing is copied, and the file is replaced by an empty one:
// keys are never added, callers write only keys their files hold, and this
// has always been so. Write failures show on out, which the replacement
// checks.
class PropertyRewriter final : public Rewriter {
  public:
    PropertyRewriter(const char *key, uint32_t type, const void *value, uint32_t valueSize) noexcept
        : key_(key), type_(type), value_(value), valueSize_(valueSize)
    {
    }

    Rewrite rewrite(std::FILE *in, std::FILE *out) noexcept override
    {
        try {
            std::string text;
            if (const int32_t status = valueText(value_, valueSize_, type_, text); status != SM_STATUS_SUCCESS)
                return {status, false};
            PropertyLines lines(in);
            PropertyEntry entry;
            bool found = false;
            while (!found && lines.next(entry))
                found = propertyKeyMatches(entry.key, key_);
            if (lines.failed())
                return {SM_STATUS_FAILURE, false};
            if (!found)
                return {SM_STATUS_SUCCESS, false};
            std::rewind(in);
            if (!copyBytes(in, out, entry.start))
                return {SM_STATUS_FAILURE, false};
            const std::string line = std::string(key_).append(1, '=').append(text).append(1, '\n');
            std::fwrite(line.data(), 1, line.size(), out);
            if (::fseeko(in, static_cast<off_t>(entry.end), SEEK_SET) != 0 || !copyRest(in, out))
                return {SM_STATUS_FAILURE, false};
            return {SM_STATUS_SUCCESS, false};
        } catch (...) {
            return {SM_STATUS_NO_MEMORY, false};
        }
    }

  private:
    const char *key_;
    uint32_t type_;
    const void *value_;
    uint32_t valueSize_;
};

}  // namespace

int32_t writeProperty(const char *key, uint32_t type, const void *value, uint32_t valueSize, const char *path,
                      int16_t lockWait) noexcept
{
    if (key == nullptr || value == nullptr || path == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const FileGuard guard(path, FileAccess::write, lockWait);
    if (guard.status() != SM_STATUS_SUCCESS)
        return guard.status();
    try {
        if (const int32_t recovered = recoverBackup(path); recovered != SM_STATUS_SUCCESS)
            return recovered;
        const std::string file = path;
        PropertyRewriter rewriter(key, type, value, valueSize);
        return replaceFile(file, rewriter);
    } catch (...) {
        return SM_STATUS_NO_MEMORY;
    }
}

}  // namespace zksupt::config
