// Any text through the address readers: the dotted-text rewriting on a block
// of exactly the text's size, both families' readers with a round trip
// through the writers, and the if_inet6 line reader.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "net/address_lists.h"
#include "net/address_text.h"
#include "net/module.h"

namespace {

namespace nt = zksupt::net;

void check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

struct Free {
    void operator()(void *p) const noexcept { std::free(p); }
};

// Text read as family's address, written back and read again: the same bytes.
void roundTrip(uint32_t family, const char *text)
{
    unsigned char bytes[16], again[16];
    uint32_t size = sizeof bytes;
    if (nt::inetFromText(family, text, bytes, &size) != 0)
        return;
    char written[64];
    uint32_t length = sizeof written;
    check(nt::inetToText(family, bytes, size, written, &length) == 0 && length == std::strlen(written) + 1);
    uint32_t sizeAgain = sizeof again;
    check(nt::inetFromText(family, written, again, &sizeAgain) == 0 && sizeAgain == size &&
          std::memcmp(bytes, again, size) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const bool ready = nt::startNetwork();
    check(ready);
    if (size > 4096)
        return 0;
    const std::string text(reinterpret_cast<const char *>(data), size);
    const std::size_t length = std::strlen(text.c_str());

    const std::unique_ptr<char, Free> rewritten{static_cast<char *>(std::malloc(length + 1))};
    nt::rewriteDottedText(text.c_str(), rewritten.get());
    check(std::strlen(rewritten.get()) <= length && std::strchr(rewritten.get(), 'x') == nullptr);

    uint32_t address = 0, again = 0;
    if (nt::ipv4FromText(text.c_str(), &address) == 0) {
        char dotted[16];
        uint32_t dottedSize = sizeof dotted;
        check(nt::ipv4ToText(address, dotted, &dottedSize) == 0);
        check(nt::ipv4FromText(dotted, &again) == 0 && again == address);
    }
    roundTrip(1, text.c_str());
    roundTrip(2, text.c_str());

    // Table lines arrive as C strings, read up to their first NUL.
    nt::Inet6Address parsed;
    if (nt::parseIfInet6Line(text.c_str(), parsed))
        check(std::strlen(parsed.interface) > 0 && std::strlen(parsed.interface) < sizeof parsed.interface);
    return 0;
}
