#include "log/log_files.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include <zksupt/log.h>
#include <zksupt/xlt.h>

#include "support/sandbox.h"

namespace zksupt::test {

std::string logPathOf(uint32_t target)
{
    char path[256];
    uint32_t size = sizeof path;
    return SMGetLogPathFileName(target, path, &size) == 0 ? path : "";
}

std::string backupOf(std::string path)
{
    path.back() = '_';
    return path;
}

void removeLogs()
{
    std::filesystem::remove_all(sandbox().logDir() + "/log");
}

std::u16string unitsOf(std::string_view bytes)
{
    std::u16string units(bytes.size() / 2, u'\0');
    std::memcpy(units.data(), bytes.data(), units.size() * 2);
    return units;
}

std::u16string widen(std::string_view utf8)
{
    std::u16string units;
    for (std::size_t i = 0; i < utf8.size();) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : 3;
        char32_t point = length == 1 ? lead : lead & (length == 2 ? 0x1F : 0x0F);
        for (std::size_t k = 1; k < length; ++k)
            point = point << 6 | (static_cast<unsigned char>(utf8[i + k]) & 0x3F);
        units.push_back(static_cast<char16_t>(point));
        i += length;
    }
    return units;
}

std::string hostName(std::size_t max)
{
    char name[300] = {};
    gethostname(name, sizeof name - 1);
    return std::string(name).substr(0, max);
}

void fill(const std::string &path, const std::string &bytes)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

std::string headerBytes()
{
    const std::string text = "#-------------------------------\r\n# Do not remove this block\r\n"
                             "# This data file is parsed\r\n#------------------------------- \r\n\r\n";
    std::string bytes = "\xFF\xFE";
    for (char c : text)
        bytes += std::string{c, '\0'};
    return bytes;
}

std::u16string textRecord(const std::string &id, const std::string &source, const std::string &category,
                          const std::string &type, const std::string &description, const std::string &dump)
{
    return widen("EventID: " + id + "\r\nSource: " + source + "\r\nCategory: " + category + "\r\nType: " + type +
                 "\r\nDate and Time: <time>\r\nComputer: " + hostName(63) + "\r\nDescription:\r\n" + description +
                 "\r\nData: Bytes in Hex\r\n" + dump + "\r\n");
}

std::u16string withTimes(std::u16string expected, const std::u16string &actual)
{
    std::size_t line = 0;
    for (std::size_t at = expected.find(u"<time>"); at != std::u16string::npos; at = expected.find(u"<time>", at)) {
        line = actual.find(u"Date and Time: ", line);
        const std::size_t end = actual.find(u"\r\n", line);
        if (line == std::u16string::npos || end - line != 15 + 24)
            return u"no time line of 24 characters where expected";
        line += 15;
        expected.replace(at, 6, actual.substr(line, 24));
    }
    return expected;
}

std::string xmlEntry(const std::string &actual, std::size_t from, const std::string &fields)
{
    const std::size_t at = actual.find("<TimeStamp>", from) + 11;
    const std::string stamp = actual.substr(at, actual.find('<', at) - at);
    const auto seconds = static_cast<int32_t>(std::strtoll(stamp.c_str(), nullptr, 10));
    char text[64] = "";
    uint32_t size = sizeof text;
    SMXLTTypeValueToUTF8(&seconds, 4, text, &size, 11);
    return "<LogEntry><TimeStamp>" + stamp + "</TimeStamp><DateTime>" + text + "</DateTime><ComputerName>" +
           hostName(255) + "</ComputerName>" + fields + "</LogEntry>";
}

std::optional<bool> wellFormed(const std::string &path)
{
    if (access("/usr/bin/xmllint", X_OK) != 0)
        return std::nullopt;
    const std::string command = "/usr/bin/xmllint --noout '" + path + "' 2>/dev/null";
    return std::system(command.c_str()) == 0;
}

}  // namespace zksupt::test
