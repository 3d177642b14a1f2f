// System calls of the code under test made to fail, to hang or to be the process's last.
//
//     const Faults faults({{"write", 2, ENOSPC}});            // the second write meets a full disk
//     const Faults faults({{"close", 1, EIO, "report"}});     // the first close of a file "report"
//     const Faults faults({{"openat", 3, 0, "", [] { ... }}}); // something happens before that
//     call
//
// Sleeps of the code under test are cut to a moment while a Faults lives.
// A test binary that uses this is linked with dorn_fault_injection(), which puts the functions of
// faults.cpp in front of the system's; the program itself is not. A call to wrap is added in
// faults.cpp and in kWrappedCalls of tests/CMakeLists.txt.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace dorn {

// Beside errno values, what a fault can be.
inline constexpr int kShort = -1;  // read and write: does only the first half
inline constexpr int kHang = -2;   // does not return while the Faults live
inline constexpr int kDie = -3;    // the process ends before the call, as by kill -9

struct Fault {
    std::string call;       // "write"; "*" counts every wrapped call, "!write" all but that
    int nth;                // the first is 1; 0 stands for each
    int error;              // an errno value, one of the above, or 0 for a call that succeeds
    std::string name = {};  // base name of the file that the call is for; empty: any
    std::function<void()> before = {};  // runs before the call, whose own calls don't count
};

/// The faults hold while it lives, for all threads; one at a time.
class Faults {
  public:
    explicit Faults(std::vector<Fault> faults);
    /// Lets calls that hang go on, and waits until they have.
    ~Faults();
    Faults(const Faults&) = delete;
    Faults& operator=(const Faults&) = delete;

    /// How many wrapped calls there have been.
    static int calls();
};

}  // namespace dorn
