#include "lock/object_name.h"

#include <climits>
#include <cstring>

#include "digest/md5.h"

namespace zksupt::lock {
namespace {

// Written only by the name registry's start and stop, before and after any
// call that reads it.
char directory[PATH_MAX];

const char *tagOf(uint32_t kind) noexcept
{
    switch (kind) {
    case kMutexKind:
        return "zksupmtx";
    case kSemaphoreKind:
        return "zksupsmp";
    case kSharedMemoryKind:
        return "zksupshm";
    case kEventKind:
        return "zksupevt";
    case kRwLockKind:
        return "zksuprwl";
    case kFileLockKind:
        return "zksupflk";
    default:
        return nullptr;
    }
}

bool isLockFileKind(uint32_t kind) noexcept
{
    return kind == kMutexKind || kind == kFileLockKind;
}

// Appends text at out.text + out.length; the caller has checked the room.
void append(ObjectName &out, std::string_view text) noexcept
{
    std::memcpy(out.text + out.length, text.data(), text.size());
    out.length += text.size();
}

}  // namespace

void nameDigest(const char *name, char (&digest)[kDigestLength + 1]) noexcept
{
    static constexpr char kHex[] = "0123456789ABCDEF";
    SMRFC1321Context context;
    digest::md5Load(&context);
    digest::md5Add(&context, name, static_cast<uint32_t>(std::strlen(name) + 1));
    digest::md5Finish(&context);
    for (std::size_t i = 0; i < sizeof context.digest; ++i) {
        digest[2 * i] = kHex[context.digest[i] >> 4];
        digest[2 * i + 1] = kHex[context.digest[i] & 0xF];
    }
    digest[kDigestLength] = '\0';
}

std::optional<ObjectName> objectName(uint32_t kind, const char *name) noexcept
{
    const char *tag = tagOf(kind);
    if (name == nullptr || *name == '\0' || tag == nullptr)
        return std::nullopt;
    const bool lockFile = isLockFileKind(kind);
    if (lockFile && directory[0] == '\0')
        return std::nullopt;
    // The room a form takes with its NUL: directory, "/.", tag and digest for
    // lock files; tag and digest for key names.
    const std::size_t directoryLength = lockFile ? std::strlen(directory) : 0;
    const std::size_t needed = lockFile ? kDigestLength + directoryLength + 11 : kDigestLength + 9;
    if (needed > kObjectNameLimit)
        return std::nullopt;
    char digest[kDigestLength + 1];
    nameDigest(name, digest);
    ObjectName out{};
    if (lockFile) {
        append(out, {directory, directoryLength});
        append(out, "/.");
    }
    append(out, tag);
    append(out, {digest, kDigestLength});
    out.text[out.length] = '\0';
    return out;
}

const char *ipcDirectory() noexcept
{
    return directory[0] != '\0' ? directory : nullptr;
}

bool setIpcDirectory(std::string_view path) noexcept
{
    directory[0] = '\0';
    if (path.empty() || path.size() >= sizeof directory)
        return false;
    std::memcpy(directory, path.data(), path.size());
    directory[path.size()] = '\0';
    return true;
}

void clearIpcDirectory() noexcept
{
    directory[0] = '\0';
}

}  // namespace zksupt::lock
