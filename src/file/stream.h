// An owned stdio stream, closed when it goes out of scope. Code that must
// learn whether the close succeeded (a written copy) takes it back with
// release() and closes it itself.
#pragma once

#include <cstdio>
#include <memory>

namespace zksupt::file {

struct CloseStream {
    void operator()(std::FILE *stream) const noexcept { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

}  // namespace zksupt::file
