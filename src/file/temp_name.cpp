// Free names for temporary files. The file is not created: the name is free
// only at the moment of the test, and callers create it themselves.
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include <zksupt/status.h>

#include "file/operations.h"
#include "frame/size_out.h"

namespace zksupt::file {
namespace {

constexpr char kNameCharacters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
constexpr unsigned kNameCharacterCount = sizeof kNameCharacters - 1;
constexpr uint32_t kNameLength = 8;
constexpr int kAttempts = 100;
constexpr std::size_t kPathLimit = 256;

// The names come from the C random generator, seeded on first use in each
// process with the time and the process ID. A child forked after its parent
// drew names seeds afresh: with the parent's state it would try the very
// names its parent and every sibling try, and a writer killed before its
// rename leaves its temporary file behind, so that children of one parent
// would find one more name taken after every such crash, until none is free.
// The process ID keeps processes started in the same second apart.
void seedOnce()
{
    static std::atomic<pid_t> seededFor{0};
    const pid_t self = ::getpid();
    if (seededFor.exchange(self) != self)
        std::srand(static_cast<unsigned>(std::time(nullptr)) ^ (static_cast<unsigned>(self) << 16));
}

}  // namespace

int32_t temporaryName(const char *directory, char *name, uint32_t *size) noexcept
{
    if (directory == nullptr || name == nullptr || size == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    if (const int32_t status = frame::requireCapacity(size, kNameLength + 1); status != SM_STATUS_SUCCESS)
        return status;
    seedOnce();
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        for (uint32_t i = 0; i < kNameLength; ++i)
            name[i] = kNameCharacters[static_cast<unsigned>(std::rand()) % kNameCharacterCount];
        name[kNameLength] = '\0';
        char path[kPathLimit];
        std::snprintf(path, sizeof path, "%s/%s", directory, name);
        if (!entryExists(path)) {
            *size = kNameLength + 1;
            return SM_STATUS_SUCCESS;
        }
    }
    return SM_STATUS_FAILURE;
}

}  // namespace zksupt::file
