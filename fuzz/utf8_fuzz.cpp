// Any byte string through the UTF-8 to UCS-2 converter and back: no read past
// the terminator, and the size a query reports is the size a conversion uses.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "text/convert.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);  // ends in NUL
    uint32_t needed = 0;
    const int32_t query = zksupt::text::utf8ToUcs2(nullptr, &needed, text.c_str());
    if (query != 0)
        return 0;
    std::vector<ucs2> units(needed / 2);
    uint32_t written = needed;
    if (zksupt::text::utf8ToUcs2(units.data(), &written, text.c_str()) != 0 || written != needed)
        __builtin_trap();

    uint32_t back = 0;
    if (zksupt::text::ucs2ToUtf8(nullptr, &back, units.data()) != 0)
        return 0;
    std::vector<char> bytes(back);
    uint32_t backWritten = back;
    if (zksupt::text::ucs2ToUtf8(bytes.data(), &backWritten, units.data()) != 0 || backWritten != back)
        __builtin_trap();
    return 0;
}
