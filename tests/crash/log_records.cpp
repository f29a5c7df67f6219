#include "crash/log_records.h"

#include <filesystem>
#include <vector>

#include "log/log_files.h"
#include "support/sandbox.h"

namespace zksupt::test {
namespace {

struct Record {
    std::string id;  // the event ID, as text
    bool whole;
};

std::string between(const std::string &text, std::size_t from, const std::string &before, const std::string &after)
{
    const std::size_t at = text.find(before, from);
    if (at == std::string::npos)
        return "";
    const std::size_t start = at + before.size(), end = text.find(after, start);
    return end == std::string::npos ? "" : text.substr(start, end - start);
}

std::size_t count(const std::string &text, const std::string &part)
{
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++found;
    return found;
}

std::vector<Record> textRecords(const std::string &path)
{
    std::vector<Record> records;
    const std::u16string units = unitsOf(path);
    for (std::size_t at = 0, next; at < units.size(); at = next) {
        next = std::min(units.find(u"EventID: ", at + 1), units.size());
        const std::u16string record = units.substr(at, next - at);
        const std::string id = between(std::string(record.begin(), record.end()), 0, "EventID: ", "\r");
        const std::u16string expected =
            id == "1"
                ? textRecord("1", "crash", "Lodestar Engine", "Information", "Log backup created")
                : textRecord(id, "crash", "Pell Service", "Warning", "record " + id,
                             "0x00000000: 64 61 74 61" + std::string(39, ' ') + "data" + std::string(13, ' ') + "\r\n");
        records.push_back({id, record == withTimes(expected, record)});
    }
    return records;
}

std::vector<Record> xmlRecords(const std::string &file)
{
    std::vector<Record> records;
    for (std::size_t at = file.find("<LogEntry>"); at != std::string::npos; at = file.find("<LogEntry>", at + 1)) {
        const std::string id = between(file, at, "<ID>", "<");
        if (id.empty() || id.find_first_not_of("0123456789") != std::string::npos) {
            records.push_back({id, false});
            continue;
        }
        const std::string expected =
            id == "1" ? xmlEntry(file, at, xmlFields(4, 1, "", "", "crash", "Lodestar Engine", "Log backup created"))
                      : xmlEntry(file, at,
                                 xmlFields(2, std::stoll(id), "", "", "crash", "Pell Service", "record " + id,
                                           "0x64,0x61,0x74,0x61"));
        records.push_back({id, file.compare(at, expected.size(), expected) == 0});
    }
    return records;
}

testing::AssertionResult judge(const std::vector<Record> &records, bool afterAppend, std::size_t &knownBroken)
{
    std::size_t broken = 0;
    for (std::size_t i = 0; i < records.size(); ++i)
        if (!records[i].whole && (afterAppend || i + 1 < records.size()))
            ++broken;
    if (broken > knownBroken)
        return testing::AssertionFailure() << broken << " broken records, " << knownBroken << " known";
    if (afterAppend) {
        if (records.empty() || !records.back().whole || records.back().id.empty() ||
            std::stoll(records.back().id) % 100000 != 99)
            return testing::AssertionFailure() << "the survivor's record is not the last, whole";
        knownBroken = broken;
    } else if (!records.empty() && !records.back().whole) {
        ++knownBroken;  // the record being written when the writer died
    }
    return testing::AssertionSuccess();
}

}  // namespace

testing::AssertionResult textLogIsWhole(const std::string &path, bool afterAppend, bool, std::size_t &knownBroken)
{
    const std::string file = readFile(path);
    if (file.empty() && !afterAppend)
        return testing::AssertionSuccess();
    if (!file.starts_with(headerBytes()))
        return testing::AssertionFailure() << "the text log does not start with its header";
    return judge(textRecords(path), afterAppend, knownBroken);
}

testing::AssertionResult xmlLogIsWhole(const std::string &path, bool afterAppend, bool thorough,
                                       std::size_t &knownBroken)
{
    const std::string file = readFile(path);
    if (file.empty() && !afterAppend)
        return testing::AssertionSuccess();
    if (!file.starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?><EventLog>"))
        return testing::AssertionFailure() << "the XML log does not start with its declaration and root";
    if (afterAppend && (count(file, "<LogEntry>") != count(file, "</LogEntry>") || count(file, "</EventLog>") != 1 ||
                        !file.ends_with("</LogEntry></EventLog>") || (thorough && wellFormed(path) == false)))
        return testing::AssertionFailure() << "the XML log is not well-formed after the append:\n" << file;
    return judge(xmlRecords(file), afterAppend, knownBroken);
}

}  // namespace zksupt::test
