// ipc keys and ipc clean: the key file of named System V objects and the
// semaphore sets of processes that have ended.
#include "common.h"

#include <zksupt/config.h>
#include <zksupt/status.h>

#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <memory>

namespace zktool {
namespace {

const char *const kNameSection = "Unique String Name Key Section";
const char *const kSetSection = "Semaphore List";
// The var-data directories the library looks in, in its order: keellib's, then fenx's.
const int32_t kVarDataProducts[] = {45, 44};
constexpr uint32_t kVarDataKind = 4;

// The key file lives in the ".ipc" directory of the var-data directory.
int32_t keyFilePath(std::string &path)
{
    int32_t status = SM_STATUS_NOT_FOUND;
    for (int32_t product : kVarDataProducts) {
        char directory[4096];
        uint32_t size = sizeof directory;
        status = SMGetPathByProductIDandType(product, kVarDataKind, directory, &size);
        if (status == 0) {
            path = std::string(directory) + "/.ipc/.lxsuptIPCini";
            return 0;
        }
    }
    return status;
}

// The keys of a section; an absent file or section holds none.
std::vector<std::string> keysOf(const char *section, const std::string &path, int32_t &status)
{
    std::vector<std::string> keys;
    std::string list;
    status = readIniText(section, nullptr, path, list);
    if (status == SM_STATUS_FILE_OPEN_FAILED || status == SM_STATUS_SECTION_NOT_FOUND ||
        status == SM_STATUS_KEY_NOT_FOUND)
        status = 0;
    for (size_t at = 0; status == 0 && at < list.size() && list[at] != '\0';) {
        size_t end = list.find('\0', at);
        keys.push_back(list.substr(at, end - at));
        at = end + 1;
    }
    return keys;
}

std::string valueOf(const char *section, const std::string &key, const std::string &path)
{
    std::string text;
    return readIniText(section, key.c_str(), path, text) == 0 ? std::string(text.c_str()) : std::string();
}

bool processAlive(unsigned long long pid)
{
    struct stat info {};
    return pid != 0 && stat(("/proc/" + std::to_string(pid)).c_str(), &info) == 0;
}

std::string semaphoreState(key_t key)
{
    int id = semget(key, 0, 0);
    if (id < 0)
        return "absent";
    int value = semctl(id, 0, GETVAL);
    int last = semctl(id, 0, GETPID);
    std::string state = "semaphore set " + std::to_string(id) + ", value " + std::to_string(value);
    if (last > 0)
        state += ", last used by " + std::to_string(last) + (processAlive(last) ? " (alive)" : " (ended)");
    return state;
}

std::string sharedMemoryState(key_t key)
{
    int id = shmget(key, 0, 0);
    if (id < 0)
        return "absent";
    struct shmid_ds info {};
    if (shmctl(id, IPC_STAT, &info) != 0)
        return "segment " + std::to_string(id);
    return "segment " + std::to_string(id) + ", " + std::to_string(info.shm_segsz) + " bytes, creator " +
           std::to_string(info.shm_cpid) + (processAlive(info.shm_cpid) ? " (alive)" : " (ended)");
}

int listKeys()
{
    std::string path;
    if (int32_t status = keyFilePath(path))
        return fail("key file", status, exitCodeFor(status));
    int32_t status = 0;
    std::cout << "key file " << path << "\n";
    for (const std::string &name : keysOf(kNameSection, path, status)) {
        const std::string text = valueOf(kNameSection, name, path);
        const auto key = static_cast<key_t>(std::strtoul(text.c_str(), nullptr, 10));
        const bool shared = name.rfind("zksupshm", 0) == 0;
        char hex[16];
        std::snprintf(hex, sizeof hex, "0x%08X", static_cast<unsigned>(key));
        std::cout << name << " key " << text << " (" << hex
                  << "): " << (shared ? sharedMemoryState(key) : semaphoreState(key)) << "\n";
    }
    if (status != 0)
        return fail(path, status, exitCodeFor(status));
    for (const std::string &set : keysOf(kSetSection, path, status)) {
        const unsigned long long owner = std::strtoull(valueOf(kSetSection, set, path).c_str(), nullptr, 10);
        const bool exists = semctl(std::atoi(set.c_str()), 0, GETVAL) >= 0;
        std::cout << "unnamed set " << set << ": " << (exists ? "exists" : "absent") << ", owner " << owner
                  << (processAlive(owner) ? " (alive)" : " (ended)") << "\n";
    }
    return status == 0 ? kExitOk : fail(path, status, exitCodeFor(status));
}

// Removes the unnamed sets whose owner has ended, as the library does when it
// starts, and the entries of sets that are already gone.
int clean()
{
    std::string path;
    if (int32_t status = keyFilePath(path))
        return fail("key file", status, exitCodeFor(status));
    int32_t status = 0;
    int exitCode = kExitOk;
    for (const std::string &set : keysOf(kSetSection, path, status)) {
        const unsigned long long owner = std::strtoull(valueOf(kSetSection, set, path).c_str(), nullptr, 10);
        if (processAlive(owner))
            continue;
        const int id = std::atoi(set.c_str());
        const bool removed = semctl(id, 0, IPC_RMID) == 0;
        if (!removed && errno != EINVAL && errno != EIDRM) {
            exitCode = fail("set " + set, SM_STATUS_FAILURE, kExitFailed);
            continue;
        }
        int32_t written = SMWriteINIPathFileValue(kSetSection, set.c_str(), 1, nullptr, 0, path.c_str(), kWaitForLock);
        if (written != 0)
            exitCode = fail(path + " " + set, written, exitCodeFor(written));
        std::cout << (removed ? "removed set " : "dropped entry of vanished set ") << set << " of ended process "
                  << owner << "\n";
    }
    if (status != 0)
        return fail(path, status, exitCodeFor(status));
    return exitCode;
}

}  // namespace

void addIpcCommands(CLI::App &app, Outcome &outcome)
{
    CLI::App *ipc = app.add_subcommand("ipc", "Show and clean the library's System V objects");
    ipc->require_subcommand(1);
    ipc->add_subcommand("keys", "List the key file's names and keys with the state of each object")
        ->callback([&outcome] { outcome.exitCode = listKeys(); });
    ipc->add_subcommand("clean", "Remove the semaphore sets of processes that have ended")->callback([&outcome] {
        outcome.exitCode = clean();
    });
}

}  // namespace zktool
