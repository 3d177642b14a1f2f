// A descriptor that is closed with its owner. A header alone, so that the adaptor programs, which
// stand without dorn's libraries, use it too.
#pragma once

#include <unistd.h>
#include <utility>

namespace dorn {

/// -1 stands for none.
class Fd {
  public:
    Fd() = default;
    explicit Fd(int fd) : fd_(fd) {}
    Fd(Fd&& other) noexcept : fd_(other.release()) {}
    Fd& operator=(Fd&& other) noexcept {
        if (this != &other) {
            reset();
            fd_ = other.release();
        }
        return *this;
    }
    ~Fd() {
        reset();
    }

    int get() const {
        return fd_;
    }
    explicit operator bool() const {
        return fd_ >= 0;
    }
    int release() {
        return std::exchange(fd_, -1);
    }
    void reset() {
        if (fd_ >= 0) ::close(release());
    }
    /// Closes it. 0, or -1 with errno set and the descriptor gone all the same.
    int close() {
        return ::close(release());
    }

  private:
    int fd_ = -1;
};

}  // namespace dorn
