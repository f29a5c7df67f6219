// An owned file descriptor, closed when it goes out of scope.
#pragma once

#include <unistd.h>

#include <utility>

namespace zksupt::file {

class Descriptor {
  public:
    explicit Descriptor(int fd) noexcept : fd_(fd) {}
    ~Descriptor()
    {
        if (fd_ >= 0)
            ::close(fd_);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    // Handed on whole, as a function that opens a file returns it.
    Descriptor(Descriptor &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Descriptor &operator=(Descriptor &&) = delete;

    explicit operator bool() const noexcept { return fd_ >= 0; }
    int get() const noexcept { return fd_; }

  private:
    int fd_;
};

}  // namespace zksupt::file
