// The lock of the process-wide path table: held while the table is read,
// freed or rebuilt. A plain process-local mutex for now; this is the one
// place to change when the library's own unnamed mutex replaces it.
#pragma once

namespace zksupt::config {

class TableLock {
  public:
    TableLock() noexcept;
    ~TableLock();
    TableLock(const TableLock &) = delete;
    TableLock &operator=(const TableLock &) = delete;
};

}  // namespace zksupt::config
