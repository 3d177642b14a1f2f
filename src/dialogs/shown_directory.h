// The directory that the names of a dialog are relative to.
#pragma once

#include <fcntl.h>
#include <unistd.h>

namespace dorn {

/// A descriptor of the shown directory, which is the working one when this is made. A call that
/// hangs means the same directory when it goes on after another one is shown.
class ShownDirectory {
  public:
    ShownDirectory() : fd_(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)) {}
    ~ShownDirectory() {
        if (fd_ >= 0) close(fd_);
    }
    ShownDirectory(const ShownDirectory&) = delete;
    ShownDirectory& operator=(const ShownDirectory&) = delete;

    int fd() const {
        return fd_;
    }

  private:
    const int fd_;
};

}  // namespace dorn
