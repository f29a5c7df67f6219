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
namespace {

std::string hostName(std::size_t max)
{
    char name[300] = {};
    gethostname(name, sizeof name - 1);
    return std::string(name).substr(0, max);
}

}  // namespace

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

void fill(const std::string &path, const std::string &bytes)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

std::string headerBytes()
{
    std::string bytes = "\xFF\xFE";
    for (char c : std::string("#-------------------------------\r\n# Do not remove this block\r\n"
                              "# This data file is parsed\r\n#------------------------------- \r\n\r\n"))
        bytes += std::string{c, '\0'};
    return bytes;
}

std::u16string unitsOf(const std::string &path, std::size_t from)
{
    const std::string bytes = readFile(path).substr(std::min(from, readFile(path).size()));
    std::u16string units(bytes.size() / 2, u'\0');
    std::memcpy(units.data(), bytes.data(), units.size() * 2);
    return units;
}

std::u16string textRecord(const std::string &id, const std::string &source, const std::string &category,
                          const std::string &type, const std::string &description, const std::string &dump)
{
    const std::string text = "EventID: " + id + "\r\nSource: " + source + "\r\nCategory: " + category +
                             "\r\nType: " + type + "\r\nDate and Time: <time>\r\nComputer: " + hostName(63) +
                             "\r\nDescription:\r\n" + description + "\r\nData: Bytes in Hex\r\n" + dump + "\r\n";
    std::u16string units;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        units.push_back(c < 0x80 ? c : static_cast<char16_t>((c & 0x1F) << 6 | (text[++i] & 0x3F)));
    }
    return units;
}

std::u16string withTimes(std::u16string expected, const std::u16string &actual)
{
    std::size_t line = 0;
    for (std::size_t at = expected.find(u"<time>"); at != std::u16string::npos; at = expected.find(u"<time>", at)) {
        line = actual.find(u"Date and Time: ", line);
        if (line == std::u16string::npos || actual.find(u"\r\n", line) - line != 15 + 24)
            return u"no time line of 24 characters where expected";
        line += 15;
        expected.replace(at, 6, actual.substr(line, 24));
    }
    return expected;
}

std::string xmlFields(int type, long long id, const std::string &link, const std::string &user,
                      const std::string &source, const std::string &category, const std::string &description,
                      const std::string &data)
{
    return "<Type>" + std::to_string(type) + "</Type><ID>" + std::to_string(id) + "</ID><Link>" + link +
           "</Link><UserInfo>" + user + "</UserInfo><Source>" + source + "</Source><Category>" + category +
           "</Category><Description>" + description + "</Description><Data>" + data + "</Data>";
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
    return std::system(("/usr/bin/xmllint --noout '" + path + "' 2>/dev/null").c_str()) == 0;
}

}  // namespace zksupt::test
