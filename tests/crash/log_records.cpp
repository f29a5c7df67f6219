#include "crash/log_records.h"

#include <filesystem>
#include <vector>

#include "log/log_files.h"
#include "support/sandbox.h"

namespace zksupt::test {
namespace {

std::size_t count(const std::string &text, const std::string &part)
{
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++found;
    return found;
}

testing::AssertionResult judge(const std::vector<LoggedRecord> &records, bool afterAppend, std::size_t &knownBroken)
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
    return judge(textLogRecords(path, "crash"), afterAppend, knownBroken);
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
    return judge(xmlLogRecords(file, "crash"), afterAppend, knownBroken);
}

}  // namespace zksupt::test
