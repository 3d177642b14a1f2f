// What holds after any copy, move or delete, however it ended: nothing is lost, nothing half
// written stays, nothing is left open.
#pragma once

#include "support/faults.h"
#include "support/headless_screen.h"
#include "support/operation.h"
#include "support/sandbox.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace dorn {

/// Has a move copy and delete.
inline const std::vector<Fault> kOtherFileSystem = {
    {"rename", 0, EXDEV}, {"renameat", 0, EXDEV}, {"renameat2", 0, EXDEV}};

/// Whether that is in the tree under the name.
bool holds(const Tree& tree, const std::string& name, const std::string& what);

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

    std::string from(const std::string& name = {}) const {
        return sandbox_.file(name.empty() ? "from" : "from/" + name);
    }
    std::string to(const std::string& name = {}) const {
        return sandbox_.file(name.empty() ? "to" : "to/" + name);
    }

    Sandbox sandbox_;
    Labels names_ = {"a", "dir", "empty", "fifo", "link"};  // chosen in "from"
    Tree from_;                                             // both directories after the last run
    Tree to_;
    int calls_ = 0;  // wrapped calls that it made
    Labels asked_;   // messages of its questions

  private:
    void check(int32_t kind, const Tree& before, const Labels& unlike) const;
};

}  // namespace dorn
