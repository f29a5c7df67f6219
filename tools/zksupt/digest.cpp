// md5, crc32 and base64 of a file or of standard input.
#include "common.h"

#include <zksupt/digest.h>

#include <cstdio>
#include <iostream>
#include <memory>

namespace zktool {
namespace {

// The library takes 32-bit lengths: larger input is refused, not cut.
bool fitsLength(const std::string &name, const std::string &bytes, Outcome &outcome)
{
    if (bytes.size() <= 0xFFFFFFF0u)
        return true;
    outcome.exitCode = fail(name, 0x13, kExitMalformed);
    return false;
}

std::string md5Hex(const std::string &bytes)
{
    SMRFC1321Context context;
    SMRFC1321Load(&context);
    SMRFC1321AddMsg(&context, bytes.data(), static_cast<uint32_t>(bytes.size()));
    SMRFC1321ComputeMsgDigest(&context);
    // The library's digest as it stores it: RFC 1321's on a little-endian
    // host, a host-specific one on a big-endian host.
    return toHex(context.digest, sizeof context.digest);
}

std::string base64Encode(const std::string &bytes)
{
    // The encoder reads one byte past an incomplete last group: give it a zero there.
    std::string input = bytes + std::string(3, '\0');
    std::string text(4 * ((bytes.size() + 2) / 3) + 1, '\0');
    SMBase64Encode(text.data(), reinterpret_cast<const uint8_t *>(input.data()), static_cast<uint32_t>(bytes.size()),
                   nullptr);
    text.pop_back();
    return text;
}

// Decodes whole groups, ignoring line breaks and blanks; the "=" padding shortens the result.
std::string base64Decode(const std::string &text)
{
    std::string clean;
    for (char c : text) {
        if (c != '\n' && c != '\r' && c != ' ' && c != '\t')
            clean += c;
    }
    size_t groups = clean.size() / 4;
    std::string bytes(3 * groups + 1, '\0');
    SMBase64Decode(reinterpret_cast<uint8_t *>(bytes.data()), clean.c_str(), static_cast<uint32_t>(4 * groups));
    bytes.pop_back();
    size_t padding = 0;
    if (groups > 0) {
        padding += clean[4 * groups - 1] == '=';
        padding += clean[4 * groups - 2] == '=';
    }
    bytes.resize(bytes.size() - padding);
    return bytes;
}

struct DigestOptions {
    std::string file = "-";
    bool decode = false;
};

}  // namespace

void addDigestCommands(CLI::App &app, Outcome &outcome)
{
    auto md5 = std::make_shared<DigestOptions>();
    CLI::App *md5Command = app.add_subcommand("md5", "MD5 digest of a file or standard input");
    md5Command->add_option("file", md5->file, "File, or - for standard input (the default)");
    md5Command->callback([md5, &outcome] {
        std::string bytes;
        if ((outcome.exitCode = readInput(md5->file, bytes)) != 0 || !fitsLength(md5->file, bytes, outcome))
            return;
        std::cout << md5Hex(bytes) << "  " << md5->file << "\n";
    });

    auto crc = std::make_shared<DigestOptions>();
    CLI::App *crcCommand = app.add_subcommand("crc32", "CRC-32 (as zlib computes it) of a file or standard input");
    crcCommand->add_option("file", crc->file, "File, or - for standard input (the default)");
    crcCommand->callback([crc, &outcome] {
        std::string bytes;
        if ((outcome.exitCode = readInput(crc->file, bytes)) != 0 || !fitsLength(crc->file, bytes, outcome))
            return;
        char line[16];
        std::snprintf(line, sizeof line, "%08x",
                      static_cast<unsigned>(SMCRC32Compute_vn(bytes.data(), static_cast<uint32_t>(bytes.size()))));
        std::cout << line << "  " << crc->file << "\n";
    });

    auto base64 = std::make_shared<DigestOptions>();
    CLI::App *base64Command = app.add_subcommand("base64", "Base64 encoding of a file or standard input");
    base64Command->add_option("file", base64->file, "File, or - for standard input (the default)");
    base64Command->add_flag("-d,--decode", base64->decode, "Decode instead");
    base64Command->callback([base64, &outcome] {
        std::string bytes;
        if ((outcome.exitCode = readInput(base64->file, bytes)) != 0 || !fitsLength(base64->file, bytes, outcome))
            return;
        if (base64->decode) {
            outcome.exitCode = writeOutput("-", base64Decode(bytes));
        } else {
            std::cout << base64Encode(bytes) << "\n";
        }
    });
}

}  // namespace zktool
