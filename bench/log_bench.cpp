// The event logs in one process, beside the least any locked append costs:
//   TextAppend  one record to the text log (default limit, so the log moves
//               to its backup now and then): SMAppendToLog, and the floor:
//               open(O_APPEND) + fcntl lock + one write of the same bytes +
//               unlock + close
//   XmlAppend   one entry to an XML log of 1,000 entries: SMAppendToXMLLog,
//               and the floor: open + fcntl lock + fstat + one write of the
//               same bytes over the closing tag + unlock + close
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <zksupt/log.h>

#include "bench_sandbox.h"
#include "ratio_reporter.h"

namespace {

namespace fs = std::filesystem;

constexpr uint32_t kXmlEntries = 1000;
constexpr uint32_t kLogLimit = SM_LOG_DEFAULT_MAX_SIZE;

const char kSource[] = "bench service";
const char kDescription[] = "The disk of volume 3 is 91 percent full; consider removing old files.";

std::string readAll(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::string logPath(uint32_t target)
{
    zksupt::bench::installation();
    char path[256];
    uint32_t size = sizeof path;
    SMGetLogPathFileName(target, path, &size);
    return path;
}

void removeLog(const std::string &path)
{
    fs::remove(path);
    fs::remove(path.substr(0, path.size() - 1) + "_");
}

int appendEntry(const std::string &path)
{
    return SMAppendToXMLLog(path.c_str(), SM_LOG_TYPE_WARNING, SM_LOG_CATEGORY_MERIDIAN_SERVICE, 42, nullptr, kSource,
                            kDescription, nullptr, nullptr, 0, SM_LOG_MAX_SIZE_UPPER_BOUND);
}

// Locks the whole file behind fd for writing, or unlocks it.
void lockWhole(int fd, short type)
{
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    fcntl(fd, F_SETLKW, &lock);
}

void TextAppend_Library(benchmark::State &state)
{
    const std::string path = logPath(SM_LOG_TARGET_TEXT);
    removeLog(path);
    for (auto _ : state)
        SMAppendToLog(SM_LOG_TARGET_TEXT, SM_LOG_TYPE_WARNING, SM_LOG_CATEGORY_MERIDIAN_SERVICE, 42, kSource,
                      kDescription, nullptr, 0);
    removeLog(path);
}

void TextAppend_Floor(benchmark::State &state)
{
    // One record's bytes, as the library writes them.
    const std::string path = logPath(SM_LOG_TARGET_TEXT);
    removeLog(path);
    SMAppendToLog(SM_LOG_TARGET_TEXT, 2, 2, 42, kSource, kDescription, nullptr, 0);
    const std::string record = readAll(path).substr(256);
    removeLog(path);
    const std::string floorPath = path + ".floor";
    uint64_t written = 0;
    for (auto _ : state) {
        const int fd = open(floorPath.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0664);
        lockWhole(fd, F_WRLCK);
        benchmark::DoNotOptimize(write(fd, record.data(), record.size()));
        // Started again at the limit, as the log is.
        written += record.size();
        if (written >= kLogLimit) {
            ftruncate(fd, 0);
            written = 0;
        }
        lockWhole(fd, F_UNLCK);
        close(fd);
    }
    fs::remove(floorPath);
}

// An XML log of kXmlEntries entries, and its bytes.
std::string xmlLogOfEntries(const std::string &path)
{
    removeLog(path);
    for (uint32_t i = 0; i < kXmlEntries; ++i)
        appendEntry(path);
    return readAll(path);
}

void XmlAppend_Library(benchmark::State &state)
{
    const std::string path = logPath(SM_LOG_TARGET_XML);
    const std::string full = xmlLogOfEntries(path);
    uint32_t appended = 0;
    for (auto _ : state) {
        appendEntry(path);
        if (++appended == kXmlEntries) {  // back to 1,000 entries
            state.PauseTiming();
            std::ofstream(path, std::ios::binary | std::ios::trunc) << full;
            appended = 0;
            state.ResumeTiming();
        }
    }
    state.counters["file bytes"] = static_cast<double>(full.size());
    removeLog(path);
}

void XmlAppend_Floor(benchmark::State &state)
{
    const std::string path = logPath(SM_LOG_TARGET_XML);
    const std::string full = xmlLogOfEntries(path);
    appendEntry(path);
    // The last entry and the closing tag: what one append writes.
    const std::string grown = readAll(path);
    const std::string entry = grown.substr(full.size() - 11);
    removeLog(path);
    const std::string floorPath = path + ".floor";
    std::ofstream(floorPath, std::ios::binary) << full;
    uint32_t appended = 0;
    for (auto _ : state) {
        const int fd = open(floorPath.c_str(), O_RDWR | O_CLOEXEC);
        lockWhole(fd, F_WRLCK);
        struct stat status {};
        fstat(fd, &status);
        benchmark::DoNotOptimize(pwrite(fd, entry.data(), entry.size(), status.st_size - 11));
        lockWhole(fd, F_UNLCK);
        close(fd);
        if (++appended == kXmlEntries) {
            state.PauseTiming();
            std::ofstream(floorPath, std::ios::binary | std::ios::trunc) << full;
            appended = 0;
            state.ResumeTiming();
        }
    }
    fs::remove(floorPath);
}

}  // namespace

BENCHMARK(TextAppend_Library);
BENCHMARK(TextAppend_Floor);
BENCHMARK(XmlAppend_Library);
BENCHMARK(XmlAppend_Floor);

int main(int argc, char **argv)
{
    return zksupt::bench::runWithRatios(argc, argv, "Library", "Floor",
                                        "CPU time of the library / the locked append of the same bytes:");
}
