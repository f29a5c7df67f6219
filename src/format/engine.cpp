#include "format/engine.h"

#include <cstring>

#include "format/arguments.h"
#include "format/engine_lock.h"
#include "format/field.h"
#include "format/floating.h"
#include "format/integer.h"
#include "format/output.h"
#include "format/parse.h"
#include "format/strings.h"

namespace zksupt::format {
namespace {

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
        const int32_t value = args.nextSigned(d);
        const uint32_t magnitude = value < 0 ? 0u - static_cast<uint32_t>(value) : static_cast<uint32_t>(value);
        printInteger(out, d, magnitude, Radix::decimal, value < 0 ? '-' : d.sign, '\0');
        return true;
    }
    case 'o':
    case 'u':
        printInteger(out, d, args.nextUnsigned(d), c == 'o' ? Radix::octal : Radix::decimal, '\0', '\0');
        return true;
    case 'x':
    case 'X': {
        const uint32_t value = args.nextUnsigned(d);
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

// The end of the literal text at p: its next '%' or its terminator. Most
// runs between directives are a few bytes, where a scan in place costs less
// than a call; longer ones go on with strchrnul.
inline const char *literalEnd(const char *p) noexcept
{
    for (int i = 0; i < 16; ++i, ++p)
        if (*p == '%' || *p == '\0')
            return p;
    return strchrnul(p, '%');
}

void formatInto(Output &out, const char *p, Arguments &args) noexcept
{
    for (;;) {
        const char *percent = literalEnd(p);
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
    const sync::Guard lock = lockEngine();
    return runEngine(dst, size, format, args, nullptr);
}

int32_t formatText(char *dst, uint32_t size, const char *format, ...) noexcept
{
    va_list args;
    va_start(args, format);
    const int32_t stored = formatArguments(dst, size, format, args);
    va_end(args);
    return stored;
}

}  // namespace zksupt::format
