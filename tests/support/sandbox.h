// A temporary directory of a test's own, removed with all it holds.
#pragma once

#include <string>
#include <vector>

namespace dorn {

/// Names that a careless program takes for something else; a longest one is among them.
std::vector<std::string> hostile_names();

/// The content of any file, empty where there is none.
std::string read_file(const std::string& path);

class Sandbox {
  public:
    Sandbox();
    /// Below the directory `parent`.
    explicit Sandbox(const std::string& parent);
    ~Sandbox();
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    const char* path() const {
        return path_.c_str();
    }

    /// The path of `name` in the sandbox.
    std::string file(const std::string& name) const;

    /// Makes a file of that content, a directory or a symbolic link; `name` may be any bytes.
    void write(const std::string& name, const std::string& content = {}) const;
    void mkdir(const std::string& name) const;
    void link(const std::string& target, const std::string& name) const;

    /// Makes an executable shell script of these lines.
    void script(const std::string& name, const std::string& lines) const;

    /// The content of a file, empty where there is none.
    std::string read(const std::string& name) const;

  private:
    std::string path_;
};

}  // namespace dorn
