// Programs that stand in for real ones and tell how they were started.
//
//     FakePrograms fakes;                  // first on PATH: an "orterm" that runs what it is given
//     fakes.add("show");                   // and a program that does nothing but tell
//     file_cmd("show @", "a b");
//     fakes.wait();
//     EXPECT_EQ(fakes.runs("show"), FakePrograms::Runs{{"a b"}});
#pragma once

#include "support/sandbox.h"

#include <string>
#include <vector>

namespace dorn {

class FakePrograms {
  public:
    using Runs = std::vector<std::vector<std::string>>;

    /// PATH and the process's being the parent of all it starts are put back by the destructor.
    FakePrograms();
    ~FakePrograms();
    FakePrograms(const FakePrograms&) = delete;
    FakePrograms& operator=(const FakePrograms&) = delete;

    /// A program of that name; `then` is what its script does after it has told of itself.
    void add(const std::string& name, const std::string& then = {}) const;

    /// Waits until everything that was started has ended, however it was detached.
    static void wait();

    /// The arguments of every run of that program since the last call, byte for byte, sorted.
    Runs runs(const std::string& name) const;

  private:
    Sandbox sandbox_;
    std::string path_before_;
};

}  // namespace dorn
