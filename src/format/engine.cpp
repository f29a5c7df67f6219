#include "format/engine.h"

#include <cstring>
#include <memory>

#include <zksupt/status.h>
#include <zksupt/types.h>

#include "format/engine_lock.h"
#include "format/field.h"
#include "format/floating.h"
#include "format/integer.h"
#include "format/output.h"
#include "frame/memory.h"
#include "text/convert.h"

namespace zksupt::format {
namespace {

// The caller's arguments, read in order. A copy of the va_list, so that the
// readers below can share it by reference.
class Arguments {
  public:
    explicit Arguments(va_list args) noexcept { va_copy(list_, args); }
    ~Arguments() { va_end(list_); }
    Arguments(const Arguments &) = delete;
    Arguments &operator=(const Arguments &) = delete;

    template <class T>
    T next() noexcept
    {
        return va_arg(list_, T);
    }

  private:
    va_list list_;
};

// Continues a decimal number whose leading digits made value. Overflow wraps
// as the 32-bit arithmetic of the format's numbers does.
int32_t readNumber(const char *&p, uint32_t value) noexcept
{
    while (*p >= '0' && *p <= '9')
        value = value * 10 + static_cast<uint32_t>(*p++ - '0');
    return static_cast<int32_t>(value);
}

// Reads the flags, width, precision and size letters after a '%' and returns
// the conversion character, with p after it; '\0' when the format ends
// first, with p on the terminator.
char parseDirective(const char *&p, Directive &d, Arguments &args) noexcept
{
    for (;;) {
        const char c = *p;
        if (c == '\0')
            return c;
        ++p;
        switch (c) {
        case ' ':
            if (d.sign == '\0')
                d.sign = ' ';
            break;
        case '+':
            d.sign = '+';
            break;
        case '#':
            d.alternate = true;
            break;
        case '-':
            d.leftAdjust = true;
            break;
        case '0':  // a flag here; after other width digits it is one of them
            d.zeroPad = true;
            break;
        case '*': {
            const int32_t width = args.next<int32_t>();
            d.width = width;
            if (width < 0) {
                d.leftAdjust = true;
                d.width = static_cast<int32_t>(0u - static_cast<uint32_t>(width));
            }
            break;
        }
        case '.': {
            int32_t precision = 0;
            if (*p == '*') {
                ++p;
                precision = args.next<int32_t>();
            } else {
                precision = readNumber(p, 0);
            }
            d.precision = precision < 0 ? -1 : precision;
            break;
        }
        case '1': case '2': case '3': case '4': case '5': case '6': case '7': case '8': case '9':
            d.width = readNumber(p, static_cast<uint32_t>(c - '0'));
            break;
        case 'h':
            d.shortInt = true;
            break;
        case 'l':  // long is 32 bits, as int; "ll" is no wider
            d.longInt = true;
            break;
        case 'L':  // floating arguments are always read as double
            break;
        default:
            return c;
        }
    }
}

// Integer arguments are 32 bits; 'h' (unless 'l' came too) keeps the low 16.
int32_t nextSigned(Arguments &args, const Directive &d) noexcept
{
    const int32_t value = args.next<int32_t>();
    return d.shortInt && !d.longInt ? static_cast<int16_t>(value) : value;
}

uint32_t nextUnsigned(Arguments &args, const Directive &d) noexcept
{
    const uint32_t value = args.next<uint32_t>();
    return d.shortInt && !d.longInt ? static_cast<uint16_t>(value) : value;
}

void printBytes(Output &out, const Directive &d, const char *bytes, uint64_t length) noexcept
{
    Pieces text;
    text.text(bytes, length);
    layOut(out, d, '\0', '\0', 0, text);
}

// A string, or at most precision bytes of it (never reading further).
void printString(Output &out, const Directive &d, const char *s) noexcept
{
    if (s == nullptr)
        s = "(null)";
    printBytes(out, d, s, d.precision >= 0 ? strnlen(s, static_cast<std::size_t>(d.precision)) : std::strlen(s));
}

struct Release {
    void operator()(char *block) const noexcept { frame::release(block); }
};

// A UCS-2 string printed as 's' prints its UTF-8 form. false when it cannot
// be converted or its buffer cannot be had: the output ends there.
bool printUcs2(Output &out, const Directive &d, const ucs2 *s) noexcept
{
    if (s == nullptr) {
        printString(out, d, nullptr);
        return true;
    }
    uint32_t size = 0;
    if (text::ucs2ToUtf8(nullptr, &size, s) != SM_STATUS_SUCCESS)
        return false;
    const std::unique_ptr<char, Release> utf8(static_cast<char *>(frame::allocate(size)));
    if (utf8 == nullptr || text::ucs2ToUtf8(utf8.get(), &size, s) != SM_STATUS_SUCCESS)
        return false;
    printString(out, d, utf8.get());
    return true;
}

// Converts one directive; false when the output ends there.
bool convert(Output &out, Directive &d, char c, Arguments &args) noexcept
{
    if (c == 'D' || c == 'O' || c == 'U') {  // the same as "ld", "lo" and "lu"
        d.longInt = true;
        c = static_cast<char>(c - 'A' + 'a');
    }
    switch (c) {
    case '\0':  // a directive cut short by the end of the format
        return false;
    case 'd':
    case 'i': {
        const int32_t value = nextSigned(args, d);
        const uint32_t magnitude = value < 0 ? 0u - static_cast<uint32_t>(value) : static_cast<uint32_t>(value);
        printInteger(out, d, magnitude, Radix::decimal, value < 0 ? '-' : d.sign, '\0');
        return true;
    }
    case 'o':
    case 'u':
        printInteger(out, d, nextUnsigned(args, d), c == 'o' ? Radix::octal : Radix::decimal, '\0', '\0');
        return true;
    case 'x':
    case 'X': {
        const uint32_t value = nextUnsigned(args, d);
        printInteger(out, d, value, c == 'x' ? Radix::lowerHex : Radix::upperHex, '\0',
                     d.alternate && value != 0 ? c : '\0');
        return true;
    }
    case 'p':
        printInteger(out, d, reinterpret_cast<uintptr_t>(args.next<const void *>()), Radix::lowerHex, '\0', 'x');
        return true;
    case 'c': {
        const auto byte = static_cast<char>(args.next<int32_t>());
        printBytes(out, d, &byte, 1);
        return true;
    }
    case 's':
        printString(out, d, args.next<const char *>());
        return true;
    case 'S':
        return printUcs2(out, d, args.next<const ucs2 *>());
    case 'e':
    case 'E':
    case 'f':
    case 'g':
    case 'G':
        printFloating(out, d, c, args.next<double>());
        return true;
    case 'n': {
        const auto count = static_cast<uint32_t>(out.produced());
        if (d.shortInt && !d.longInt) {
            if (auto *target = args.next<int16_t *>())
                *target = static_cast<int16_t>(count);
        } else if (auto *target = args.next<int32_t *>()) {
            *target = static_cast<int32_t>(count);
        }
        return true;
    }
    default:  // unknown conversions print themselves, so "%%" prints '%'
        printBytes(out, d, &c, 1);
        return true;
    }
}

void formatInto(Output &out, const char *p, Arguments &args) noexcept
{
    for (;;) {
        const char *percent = strchrnul(p, '%');
        out.put(p, static_cast<uint64_t>(percent - p));
        if (*percent == '\0')
            return;
        p = percent + 1;
        Directive d;
        const char c = parseDirective(p, d, args);
        if (!convert(out, d, c, args))
            return;
    }
}

}  // namespace

int32_t runEngine(char *dst, uint32_t size, const char *format, va_list args, uint32_t *truncated) noexcept
{
    Output out(dst, size);
    if (format != nullptr) {
        Arguments arguments(args);
        formatInto(out, format, arguments);
    }
    if (truncated != nullptr)
        *truncated = out.dropped() ? 1 : 0;
    return out.finish();
}

int32_t formatArguments(char *dst, uint32_t size, const char *format, va_list args) noexcept
{
    const EngineLock lock;
    return runEngine(dst, size, format, args, nullptr);
}

}  // namespace zksupt::format
