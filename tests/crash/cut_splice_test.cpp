// An XML log append cut short, as the kernel cuts a write when its process
// is killed: the next append finds no closing root tag, yet takes the log
// back to a document that ends with its own entry.
#include <gtest/gtest.h>

#include <string>

#include <zksupt/zksupt.h>

#include "log/log_files.h"
#include "support/sandbox.h"

namespace {

using namespace zksupt::test;

int32_t append(const std::string &path, int id)
{
    const std::string description = "entry " + std::to_string(id);
    return SMAppendToXMLLog(path.c_str(), 2, 3, id, nullptr, "cut", description.c_str(), nullptr, "data", 4, 4194304);
}

std::size_t count(const std::string &text, const std::string &part)
{
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++found;
    return found;
}

TEST(CutXmlSplice, NextAppendMakesTheLogADocumentAgain)
{
    const std::string path = sandbox().path("cut/events.xml");
    fill(path, "");
    ASSERT_EQ(append(path, 1), 0);
    const std::string before = readFile(path);
    ASSERT_EQ(append(path, 2), 0);
    const std::string after = readFile(path);
    const std::size_t at = before.size() - 11, written = after.size() - at;

    // Bytes of the second splice that reached the file: into the old closing
    // tag, into the entry, all of the entry but not the new closing tag.
    const struct {
        std::size_t bytes;
        bool secondKept;
    } cuts[] = {{2, false}, {10, false}, {40, false}, {written - 12, false}, {written - 11, true}, {written - 3, true}};
    for (const auto &cut : cuts) {
        std::string left = after.substr(0, at + cut.bytes);
        if (left.size() < before.size())
            left += before.substr(left.size());
        fill(path, left);
        ASSERT_EQ(append(path, 3), 0) << cut.bytes;
        const std::string repaired = readFile(path);
        EXPECT_NE(wellFormed(path), false) << repaired;
        EXPECT_TRUE(repaired.ends_with("</LogEntry></EventLog>")) << repaired;
        EXPECT_EQ(count(repaired, "<LogEntry>"), count(repaired, "</LogEntry>")) << repaired;
        EXPECT_EQ(count(repaired, "<ID>1<"), 1u);
        EXPECT_EQ(count(repaired, "<ID>2<"), cut.secondKept ? 1u : 0u) << cut.bytes;
        EXPECT_EQ(count(repaired, "<ID>3<"), 1u);
    }
}

// A file without either closing tag is not a log the library wrote: it is
// left as it is.
TEST(CutXmlSplice, FileWithoutAnyEntryEndStaysUntouched)
{
    const std::string path = sandbox().path("cut/foreign.xml");
    const std::string foreign = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><EventLog><LogEntry><ID>1";
    fill(path, foreign);
    EXPECT_EQ(append(path, 4), 0x101);
    EXPECT_EQ(readFile(path), foreign);
}

}  // namespace
