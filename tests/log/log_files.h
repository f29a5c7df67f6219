// The event logs' files in the sandbox installation, and their expected
// contents, as the tests compare them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zksupt::test {

// The text (4) or XML (8) log's path, as the library names it.
std::string logPathOf(uint32_t target);
// A path with its last character replaced by '_'.
std::string backupOf(std::string path);
// Removes every log, so that each test starts without one.
void removeLogs();
// Writes a file of bytes, making its directory.
void fill(const std::string &path, const std::string &bytes);

// The text log's 256-byte header block: UTF-16 little-endian on every host.
std::string headerBytes();
// The host-order UCS-2 units of a file from byte `from` on.
std::u16string unitsOf(const std::string &path, std::size_t from = 256);
// A text log record; its time reads "<time>". UTF-8 of up to two bytes a character.
std::u16string textRecord(const std::string &id, const std::string &source, const std::string &category,
                          const std::string &type, const std::string &description, const std::string &dump = "");
// expected with each "<time>" replaced by the time of actual's next time
// line in turn (ctime's 24 characters, taken when the record was written).
std::u16string withTimes(std::u16string expected, const std::u16string &actual);

// The fields of an XML log entry after ComputerName.
std::string xmlFields(int type, long long id, const std::string &link, const std::string &user,
                      const std::string &source, const std::string &category, const std::string &description,
                      const std::string &data = "");
// An XML log entry with the given fields after ComputerName; its time is the
// TimeStamp of actual's next entry from `from`, and DateTime that time's text.
std::string xmlEntry(const std::string &actual, std::size_t from, const std::string &fields);
// The text between the first `before` from `from` on and the next `after`;
// empty when either is missing.
std::string between(const std::string &text, std::size_t from, const std::string &before, const std::string &after);

// A record the concurrency tests' writers log, as found in a log: its event
// ID as text and whether it is whole. The writers log every ID n as "record n"
// of source with the four bytes "data", and the library adds ID 1 for a backup.
struct LoggedRecord {
    std::string id;
    bool whole;
};
// The records of a text log (the file at path) and of an XML log (its contents) in file order.
std::vector<LoggedRecord> textLogRecords(const std::string &path, const std::string &source);
std::vector<LoggedRecord> xmlLogRecords(const std::string &file, const std::string &source);

// Whether xmllint finds the file well-formed; empty when xmllint is not installed.
std::optional<bool> wellFormed(const std::string &path);

}  // namespace zksupt::test
