// The three standard descriptors of a program. A header alone, so that the adaptor programs, which
// stand without dorn's libraries, use it too.
#pragma once

#include <fcntl.h>
#include <unistd.h>

namespace dorn {

/// Puts /dev/null where a standard descriptor was closed by whoever started the program. Otherwise
/// the next file, pipe or connection that is opened would get its number, and with it whatever is
/// printed on standard error. Before anything else is opened.
inline void hold_standard_descriptors() {
    int fd = 0;
    while (fd >= 0 && fd <= STDERR_FILENO)
        fd = open("/dev/null", O_RDWR);
    if (fd > STDERR_FILENO) close(fd);
}

}  // namespace dorn
