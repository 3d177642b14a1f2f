// A temporary directory of a test's own, removed with everything in it.
#pragma once

#include <filesystem>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string>

namespace dorn {

class SandboxTest : public testing::Test {
  protected:
    SandboxTest() {
        std::string pattern = (std::filesystem::temp_directory_path() / "dorn-XXXXXX").string();
        root_ = mkdtemp(pattern.data());
    }
    ~SandboxTest() override {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }

    /// The path of `name` in the sandbox.
    std::string in(const std::string& name) const {
        return root_ + "/" + name;
    }
    const std::string& root() const {
        return root_;
    }

  private:
    std::string root_;
};

}  // namespace dorn
