#include "log/log_files.h"

#include <unistd.h>

#include <algorithm>
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

std::string between(const std::string &text, std::size_t from, const std::string &before, const std::string &after)
{
    const std::size_t at = text.find(before, from);
    if (at == std::string::npos)
        return "";
    const std::size_t start = at + before.size(), end = text.find(after, start);
    return end == std::string::npos ? "" : text.substr(start, end - start);
}

std::vector<LoggedRecord> textLogRecords(const std::string &path, const std::string &source)
{
    std::vector<LoggedRecord> records;
    const std::u16string units = unitsOf(path);
    for (std::size_t at = 0, next; at < units.size(); at = next) {
        next = std::min(units.find(u"EventID: ", at + 1), units.size());
        const std::u16string record = units.substr(at, next - at);
        const std::string id = between(std::string(record.begin(), record.end()), 0, "EventID: ", "\r");
        const std::u16string expected =
            id == "1"
                ? textRecord("1", source, "Lodestar Engine", "Information", "Log backup created")
                : textRecord(id, source, "Pell Service", "Warning", "record " + id,
                             "0x00000000: 64 61 74 61" + std::string(39, ' ') + "data" + std::string(13, ' ') + "\r\n");
        records.push_back({id, record == withTimes(expected, record)});
    }
    return records;
}

std::vector<LoggedRecord> xmlLogRecords(const std::string &file, const std::string &source)
{
    std::vector<LoggedRecord> records;
    for (std::size_t at = file.find("<LogEntry>"); at != std::string::npos; at = file.find("<LogEntry>", at + 1)) {
        const std::string id = between(file, at, "<ID>", "<");
        if (id.empty() || id.find_first_not_of("0123456789") != std::string::npos) {
            records.push_back({id, false});
            continue;
        }
        const std::string expected =
            id == "1" ? xmlEntry(file, at, xmlFields(4, 1, "", "", source, "Lodestar Engine", "Log backup created"))
                      : xmlEntry(file, at,
                                 xmlFields(2, std::stoll(id), "", "", source, "Pell Service", "record " + id,
                                           "0x64,0x61,0x74,0x61"));
        records.push_back({id, file.compare(at, expected.size(), expected) == 0});
    }
    return records;
}

}  // namespace zksupt::test
