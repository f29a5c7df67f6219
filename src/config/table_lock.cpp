#include "config/table_lock.h"

#include <mutex>

namespace zksupt::config {
namespace {

// Constant-initialised, so it exists before the first attach.
std::mutex tableMutex;

}  // namespace

TableLock::TableLock() noexcept
{
    tableMutex.lock();
}

TableLock::~TableLock()
{
    tableMutex.unlock();
}

}  // namespace zksupt::config
