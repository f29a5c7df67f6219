#include "format/strings.h"

#include <cstring>

#include <zksupt/status.h>

#include "frame/owned.h"
#include "text/convert.h"

namespace zksupt::format {

void printBytes(Output &out, const Directive &d, const char *bytes, uint64_t length) noexcept
{
    Pieces text;
    text.text(bytes, length);
    layOut(out, d, '\0', '\0', 0, text);
}

void printString(Output &out, const Directive &d, const char *s) noexcept
{
    if (s == nullptr)
        s = "(null)";
    printBytes(out, d, s, d.precision >= 0 ? strnlen(s, static_cast<std::size_t>(d.precision)) : std::strlen(s));
}

// The UTF-8 text goes to a block sized by a first, sizing conversion; each
// directive frees its own block.
bool printUcs2(Output &out, const Directive &d, const ucs2 *s) noexcept
{
    if (s == nullptr) {
        printString(out, d, nullptr);
        return true;
    }
    uint32_t size = 0;
    if (text::ucs2ToUtf8(nullptr, &size, s) != SM_STATUS_SUCCESS)
        return false;
    const frame::Owned<char> utf8 = frame::allocateOwned<char>(size);
    if (utf8 == nullptr || text::ucs2ToUtf8(utf8.get(), &size, s) != SM_STATUS_SUCCESS)
        return false;
    printString(out, d, utf8.get());
    return true;
}

}  // namespace zksupt::format
