// Format strings made from any bytes, through the engine into a buffer of
// exactly the size given. Each directive keeps the flags, width, precision
// and size letters of the input, but its conversion is mapped onto the ones
// the fixed arguments below can serve, so that no directive reads an
// argument of another type than was passed.
#include <cstdint>
#include <memory>
#include <string>

#include <zksupt/format.h>

namespace {

constexpr char kIntegerConversions[] = "diouxXcDOU%qZ";  // with unknown ones
constexpr char kFloatingConversions[] = "feEgG";
constexpr char kStringConversions[] = "sS";
constexpr int kMostArgumentDirectives = 8;

struct Format {
    std::string text;
    int kind = 0;  // 0 integers, 1 floating point, 2 strings
};

Format makeFormat(const uint8_t *data, size_t size)
{
    Format format;
    format.kind = data[0] % 3;
    const char *conversions = format.kind == 0   ? kIntegerConversions
                              : format.kind == 1 ? kFloatingConversions
                                                 : kStringConversions;
    const size_t conversionCount = std::char_traits<char>::length(conversions);
    int directives = 0;
    for (size_t i = 1; i < size; ++i) {
        const char c = static_cast<char>(data[i]);
        if (c == '\0')
            continue;
        if (c != '%') {
            format.text.push_back(c);
            continue;
        }
        if (++directives > kMostArgumentDirectives)
            break;
        format.text.push_back('%');
        // Flags, width, precision and size letters as given, at most 12 of
        // them ('*' at most twice, and only where the arguments are integers).
        size_t kept = 0;
        int stars = 0;
        while (i + 1 < size && kept < 12) {
            const char next = static_cast<char>(data[i + 1]);
            const bool star = next == '*' && format.kind == 0 && ++stars <= 2;
            if (!(std::char_traits<char>::find("-+ #0123456789.hl", 17, next) != nullptr || star))
                break;
            format.text.push_back(next);
            ++i;
            ++kept;
        }
        const uint8_t pick = i + 1 < size ? data[++i] : 0;
        format.text.push_back(conversions[pick % conversionCount]);
    }
    return format;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2)
        return 0;
    const uint32_t capacity = data[1];
    const Format format = makeFormat(data + 1, size - 1);
    auto dst = std::make_unique<char[]>(capacity);  // exactly the capacity
    char *out = capacity > 0 ? dst.get() : nullptr;

    // Every directive may take up to three arguments (two '*' and a value).
    int32_t stored = 0;
    if (format.kind == 0) {
        stored = SMsnprintf(out, capacity, format.text.c_str(), 7, -1, 0x7FFFFFFF, -0x7FFFFFFF - 1, 42, 0, 65, 300, 12,
                            -5, 0xFFFF, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13);
    } else if (format.kind == 1) {
        stored = SMsnprintf(out, capacity, format.text.c_str(), 0.1, -0.0, 1e308, 5e-324, 1.0 / 0.0, 0.0 / 0.0, 123.456,
                            -2.5e-10, 1e22, 0.5);
    } else {
        // Each argument is both a byte string and a UCS-2 string, whichever
        // of 's' and 'S' reads it.
        static const ucs2 plain[] = {0x6162, 0x6364, 0x2020, 0};
        static const ucs2 accented[] = {0x00E9, 0};
        static const ucs2 symbols[] = {0x263A, 0x4141, 0x07FF, 0};
        static const ucs2 empty[] = {0};
        stored = SMsnprintf(out, capacity, format.text.c_str(), plain, accented, nullptr, symbols, empty, plain,
                            nullptr, symbols);
    }
    if (out != nullptr && (stored < 0 || static_cast<uint32_t>(stored) >= capacity || out[stored] != '\0'))
        __builtin_trap();
    return 0;
}
