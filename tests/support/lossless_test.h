// What holds after any copy, move or delete, however it ended: nothing is lost, nothing half
// written stays, nothing is left open.
#pragma once

#include "support/faults.h"
#include "support/headless_screen.h"
#include "support/operation.h"
#include "support/sandbox.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace dorn {

/// A tree "from", an empty directory "to" and a tree "else" that links of the first lead to.
class LosslessTest : public testing::Test {
  protected:
    using Labels = std::vector<std::string>;

    LosslessTest();

    /// Makes the trees as they are at the start of an operation, whatever there was.
    void make_trees();

    /// Runs the operation on the chosen names with these faults. Each question gets the first of
    /// `answers` that is among its buttons, else its escape button. Then checks the verdict, unless
    /// `unlike` names what was meddled with, which is left out of it.
    void run(int32_t kind, std::vector<Fault> faults, const Labels& answers,
             const Labels& unlike = {});

    /// The operation itself; flags are those of "Copy/Move Symlink(s)".
    Request request(int32_t kind) const;

    std::string from(const std::string& name) const {
        return sandbox_.file("from/" + name);
    }
    std::string to(const std::string& name) const {
        return sandbox_.file("to/" + name);
    }

    Sandbox sandbox_;
    Labels names_;    // chosen in "from"
    uint32_t flags_;  // of the request
    Tree before_;     // "from" at the start
    int calls_ = 0;   // wrapped calls that the last run made
    Labels asked_;    // messages of the last run's questions

  private:
    void check(int32_t kind, const Labels& unlike) const;
};

}  // namespace dorn
