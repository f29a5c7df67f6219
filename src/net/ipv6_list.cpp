// The IPv6 list from the kernel's if_inet6 table.
#include <net/if.h>

#include <cstdio>
#include <cstring>

#include <zksupt/status.h>

#include "file/stream.h"
#include "frame/owned.h"
#include "net/address_lists.h"
#include "text_helpers/hex_digits.h"

namespace zksupt::net {
namespace {

// Kernel lines are about 55 bytes; a longer one is no line of the table.
constexpr int kLongestLine = 128;

bool isBlank(char c) noexcept
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// Cuts the next blank-separated word off the front of text.
std::string_view nextWord(std::string_view &text) noexcept
{
    std::size_t start = 0;
    while (start < text.size() && isBlank(text[start]))
        ++start;
    std::size_t end = start;
    while (end < text.size() && !isBlank(text[end]))
        ++end;
    const std::string_view word = text.substr(start, end - start);
    text.remove_prefix(end);
    return word;
}

bool isHexNumber(std::string_view word) noexcept
{
    if (word.empty())
        return false;
    for (char c : word)
        if (text_helpers::hexDigitValue(c) < 0)
            return false;
    return true;
}

// The order of the list: the addresses most useful to a peer come first.
enum class Reach { global, siteLocal, linkLocal };

Reach reachOf(const Inet6Address &address) noexcept
{
    if (address.bytes[0] == 0xFE && (address.bytes[1] & 0xC0) == 0x80)
        return Reach::linkLocal;
    if (address.bytes[0] == 0xFE && (address.bytes[1] & 0xC0) == 0xC0)
        return Reach::siteLocal;
    return Reach::global;
}

// The addresses kept from the table, in its order. Grown with realloc so
// that running out of memory is an answer, not an exception.
class Collected {
  public:
    bool push(const Inet6Address &address) noexcept
    {
        if (count_ == capacity_) {
            const std::size_t grown = capacity_ == 0 ? 16 : capacity_ * 2;
            if (!frame::reallocateOwned(items_, grown * sizeof(Inet6Address)))
                return false;
            capacity_ = grown;
        }
        items_[count_++] = address;
        return true;
    }

    const Inet6Address *begin() const noexcept { return items_.get(); }
    const Inet6Address *end() const noexcept { return items_.get() + count_; }

  private:
    frame::Owned<Inet6Address[]> items_;
    std::size_t count_ = 0;
    std::size_t capacity_ = 0;
};

}  // namespace

bool parseIfInet6Line(std::string_view line, Inet6Address &out) noexcept
{
    const std::string_view digits = nextWord(line);
    if (digits.size() != 2 * sizeof out.bytes || !isHexNumber(digits))
        return false;
    for (std::size_t i = 0; i < sizeof out.bytes; ++i)
        out.bytes[i] = static_cast<unsigned char>(text_helpers::hexDigitValue(digits[2 * i]) << 4 |
                                                  text_helpers::hexDigitValue(digits[2 * i + 1]));
    for (int field = 0; field < 4; ++field)  // index, prefix length, scope, flags
        if (!isHexNumber(nextWord(line)))
            return false;
    const std::string_view name = nextWord(line);
    if (name.empty() || name.size() >= sizeof out.interface)
        return false;
    std::memcpy(out.interface, name.data(), name.size());
    out.interface[name.size()] = '\0';
    return true;
}

int32_t appendIpv6(EntryList &list, const char *path, const InterfaceFlags &flags) noexcept
{
    const file::Stream table{std::fopen(path, "re")};
    if (table == nullptr)
        return SM_STATUS_SUCCESS;

    Collected collected;
    char line[kLongestLine];
    while (std::fgets(line, sizeof line, table.get()) != nullptr) {
        std::string_view current(line);
        if (!current.empty() && current.back() != '\n' && !std::feof(table.get())) {
            // Too long for the table's shape: skip the rest of it too.
            int c;
            while ((c = std::fgetc(table.get())) != EOF && c != '\n') {
            }
            continue;
        }
        Inet6Address address;
        uint32_t interfaceFlags = 0;
        if (!parseIfInet6Line(current, address) || !flags.flags(address.interface, interfaceFlags))
            continue;
        if ((interfaceFlags & (IFF_LOOPBACK | IFF_NOARP)) != 0)
            continue;
        if (!collected.push(address))
            return SM_STATUS_NO_MEMORY;
    }

    for (Reach pass : {Reach::global, Reach::siteLocal, Reach::linkLocal})
        for (const Inet6Address &address : collected)
            if (reachOf(address) == pass)
                list.add(SM_ADDR_FAMILY_IPV6, address.bytes);
    return SM_STATUS_SUCCESS;
}

}  // namespace zksupt::net
