#include "format/parse.h"

namespace zksupt::format {
namespace {

// Continues a decimal number whose leading digits made value. Overflow wraps
// as the 32-bit arithmetic of the format's numbers does.
int32_t readNumber(const char *&p, uint32_t value) noexcept
{
    while (*p >= '0' && *p <= '9')
        value = value * 10 + static_cast<uint32_t>(*p++ - '0');
    return static_cast<int32_t>(value);
}

}  // namespace

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
        case '1':
        case '2':
        case '3':
        case '4':
        case '5':
        case '6':
        case '7':
        case '8':
        case '9':
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

}  // namespace zksupt::format
