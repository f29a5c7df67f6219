// The IPC name registry (module 4): where the key file lives, and the
// System V keys it hands out. Every process of the suite shares the key
// file, so two processes naming the same object get the same key.
#pragma once

#include <cstdint>

namespace zksupt::ipc {

// The key file's sections.
inline constexpr const char *kNameKeySection = "Unique String Name Key Section";
inline constexpr const char *kNumericKeySection = "Unique Numeric Value Key Section";
inline constexpr const char *kSemaphoreListSection = "Semaphore List";

// The key the first name on a machine receives; later ones count up from
// the largest key given so far.
inline constexpr uint32_t kFirstKey = 300001;

// Module 4: finds the var-data directory in the registry file, makes the
// IPC directory, key file and key-file lock paths, and removes semaphore
// sets whose creating process has ended. The stop forgets the paths.
bool startRegistry() noexcept;
void stopRegistry() noexcept;

// The key file ("<var-data>/.ipc/.lxsuptIPCini") and the data path its lock
// guards (the key file's path followed by "Sem"); null while stopped.
const char *keyFilePath() noexcept;
const char *keyFileLockPath() noexcept;

// The System V key of a key name: the one the key file records, or a new
// one recorded now. 0 when it can be neither read nor allocated.
uint32_t keyOf(const char *keyName) noexcept;

}  // namespace zksupt::ipc
