#include "common.h"

#include <zksupt/config.h>
#include <zksupt/status.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

namespace zktool {

std::string statusName(int32_t status)
{
    const char *name = zksupt_status_name(status);
    if (name == nullptr)
        return "unknown status";
    // Said as words: "KEY_NOT_FOUND" reads "key not found".
    std::string words(name);
    for (char &c : words)
        c = c == '_' ? ' ' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return words;
}

const char *const kValueTypeNames[16] = {"boolean", "int8",   "int16",  "int32", "int64", "uint8", "uint16", "uint32",
                                         "uint64",  "double", "locale", "time",  "bytes", "utf8",  "ucs2",   "ipv4"};

int valueTypeCode(const std::string &name)
{
    for (int code = 0; code < 16; ++code) {
        if (name == kValueTypeNames[code])
            return code;
    }
    char *end = nullptr;
    long code = std::strtol(name.c_str(), &end, 0);
    return (!name.empty() && *end == '\0' && code >= 0 && code <= 16) ? static_cast<int>(code) : -1;
}

int32_t readGrowing(std::string &out, std::size_t first, const std::function<int32_t(char *, uint32_t *)> &read)
{
    out.assign(first, '\0');
    for (;;) {
        auto size = static_cast<uint32_t>(out.size());
        const int32_t status = read(out.data(), &size);
        if (status == SM_STATUS_BUFFER_TOO_SMALL && size > out.size()) {
            out.assign(size, '\0');
            continue;
        }
        if (status == SM_STATUS_SUCCESS)
            out.resize(size);
        return status;
    }
}

int32_t readIniText(const char *section, const char *key, const std::string &path, std::string &out)
{
    return readGrowing(out, 8193, [&](char *buffer, uint32_t *size) {
        return SMReadINIPathFileValue(section, key, 1, buffer, size, nullptr, 0, path.c_str(), kWaitForLock);
    });
}

int fail(const std::string &what, int32_t status, int exitCode)
{
    char code[16];
    std::snprintf(code, sizeof code, "0x%X", static_cast<unsigned>(status));
    std::cerr << "zksupt: " << what << ": " << statusName(status) << " (" << code << ")\n";
    return exitCode;
}

int exitCodeFor(int32_t status)
{
    switch (status) {
    case SM_STATUS_SUCCESS:
        return kExitOk;
    case SM_STATUS_FILE_NOT_FOUND:
    case SM_STATUS_FILE_OPEN_FAILED:
    case SM_STATUS_ACCESS_DENIED:
        return kExitNoFile;
    case SM_STATUS_NOT_PRESENT:
    case SM_STATUS_NOT_FOUND:
    case SM_STATUS_SECTION_NOT_FOUND:
    case SM_STATUS_KEY_NOT_FOUND:
        return kExitNotFound;
    case SM_STATUS_BAD_SECTION_HEADER:
    case SM_STATUS_BAD_LENGTH:
    case SM_STATUS_BAD_OBJECT:
    case SM_STATUS_VALUE_TOO_LARGE:
    case SM_STATUS_VALUE_TOO_SMALL:
        return kExitMalformed;
    default:
        return kExitFailed;
    }
}

int readInput(const std::string &name, std::string &bytes)
{
    if (name == "-") {
        bytes.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
        return kExitOk;
    }
    std::ifstream in(name, std::ios::binary);
    if (!in) {
        return fail(name, errno == ENOENT ? SM_STATUS_FILE_NOT_FOUND : SM_STATUS_FILE_OPEN_FAILED, kExitNoFile);
    }
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return kExitOk;
}

int writeOutput(const std::string &name, const std::string &bytes)
{
    if (name == "-") {
        std::cout.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        std::cout.flush();
        return std::cout ? kExitOk : fail("standard output", SM_STATUS_FILE_OPEN_FAILED, kExitNoFile);
    }
    std::ofstream out(name, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    return out ? kExitOk : fail(name, SM_STATUS_FILE_OPEN_FAILED, kExitNoFile);
}

std::string toHex(const void *bytes, size_t length)
{
    static const char digits[] = "0123456789abcdef";
    std::string text;
    const auto *p = static_cast<const unsigned char *>(bytes);
    for (size_t i = 0; i < length; ++i) {
        text += digits[p[i] >> 4];
        text += digits[p[i] & 15];
    }
    return text;
}

bool fromHex(const std::string &text, std::string &bytes)
{
    auto nibble = [](char c) -> int {
        if (c >= '0' && c <= '9')
            return c - '0';
        if (c >= 'a' && c <= 'f')
            return c - 'a' + 10;
        if (c >= 'A' && c <= 'F')
            return c - 'A' + 10;
        return -1;
    };
    if (text.size() % 2 != 0)
        return false;
    bytes.clear();
    for (size_t i = 0; i < text.size(); i += 2) {
        int high = nibble(text[i]);
        int low = nibble(text[i + 1]);
        if (high < 0 || low < 0)
            return false;
        bytes += static_cast<char>(high * 16 + low);
    }
    return true;
}

}  // namespace zktool
