// The INI engine under the cross-process file lock: processes and threads
// writing one file at once lose no write, and readers never see a torn file.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <zksupt/config.h>
#include <zksupt/status.h>

#include "processes.h"
#include "support/sandbox.h"

namespace zksupt::test {
namespace {

constexpr int kWriters = 3;
constexpr int kThreads = 3;
constexpr int kKeys = 8;
constexpr int kAllKeys = kWriters * kThreads * kKeys;

std::string keyName(int process, int thread, int key)
{
    return "p" + std::to_string(process) + "t" + std::to_string(thread) + "k" + std::to_string(key);
}

const char *sectionOf(int thread)
{
    return thread % 2 == 0 ? "even" : "odd";
}

// The keys a listing of section names, or -1 when the listing failed for a
// reason other than the file or section not being there yet.
int keysListed(const std::string &path, const char *section, bool fileMayBeMissing)
{
    std::vector<char> names(16384);
    uint32_t size = static_cast<uint32_t>(names.size());
    const int32_t status =
        SMReadINIPathFileValue(section, nullptr, 1, names.data(), &size, nullptr, 0, path.c_str(), 1);
    if (status == SM_STATUS_SECTION_NOT_FOUND || (fileMayBeMissing && status == SM_STATUS_FILE_OPEN_FAILED))
        return 0;
    if (status != SM_STATUS_SUCCESS)
        return -1;
    int count = 0;
    for (const char *name = names.data(); *name != '\0'; name += std::strlen(name) + 1)
        ++count;
    return count;
}

TEST(IniAcrossProcesses, ConcurrentWritersLoseNothingAndNothingTears)
{
    const std::string dir = sandbox().path("var/concurrent");
    std::filesystem::create_directories(dir);
    const std::string path = dir + "/shared.ini";

    std::vector<std::unique_ptr<Child>> writers;
    for (int p = 0; p < kWriters; ++p)
        writers.push_back(std::make_unique<Child>([&path, p](Child &) {
            std::atomic<int> failures{0};
            std::vector<std::thread> threads;
            for (int t = 0; t < kThreads; ++t)
                threads.emplace_back([&, t] {
                    for (int k = 0; k < kKeys; ++k) {
                        const std::string key = keyName(p, t, k);
                        if (SMWriteINIPathFileValue(sectionOf(t), key.c_str(), 1, key.c_str(),
                                                    static_cast<uint32_t>(key.size() + 1), path.c_str(),
                                                    1) != SM_STATUS_SUCCESS)
                            ++failures;
                    }
                });
            for (std::thread &thread : threads)
                thread.join();
            return failures.load();
        }));
    // A reader sees each section grow and never fail.
    Child reader([&path](Child &) {
        int seen[2] = {0, 0};
        while (seen[0] + seen[1] < kAllKeys) {
            for (int s = 0; s < 2; ++s) {
                const int now = keysListed(path, sectionOf(s), seen[0] + seen[1] == 0);
                if (now < 0)
                    return 1;
                if (now < seen[s])
                    return 2;
                seen[s] = now;
            }
        }
        return 0;
    });
    for (auto &writer : writers)
        EXPECT_EQ(writer->wait(), 0) << "writes failed";
    EXPECT_EQ(reader.wait(), 0) << "a reading failed or went backwards";

    for (int p = 0; p < kWriters; ++p)
        for (int t = 0; t < kThreads; ++t)
            for (int k = 0; k < kKeys; ++k) {
                const std::string key = keyName(p, t, k);
                char value[32];
                uint32_t size = sizeof value;
                ASSERT_EQ(
                    SMReadINIPathFileValue(sectionOf(t), key.c_str(), 1, value, &size, nullptr, 0, path.c_str(), 1),
                    SM_STATUS_SUCCESS)
                    << key;
                EXPECT_EQ(std::string(value), key);
            }
    // Every line is whole, and no temporary file or backup was left.
    std::ifstream in(path);
    std::string line;
    int keyLines = 0;
    while (std::getline(in, line))
        keyLines += line.find('=') != std::string::npos ? 1 : 0;
    EXPECT_EQ(keyLines, kAllKeys);
    std::set<std::string> files;
    for (const auto &entry : std::filesystem::directory_iterator(dir))
        files.insert(entry.path().filename().string());
    EXPECT_EQ(files, std::set<std::string>{"shared.ini"});
    std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace zksupt::test
