// An owned stdio stream, closed when it goes out of scope.
#pragma once

#include <cstdio>
#include <memory>

namespace zksupt::config {

struct CloseFile {
    void operator()(std::FILE *file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

}  // namespace zksupt::config
