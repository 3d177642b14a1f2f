#include "support/sandbox.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {

Sandbox::Sandbox() : path_((std::filesystem::temp_directory_path() / "dorn-XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) std::abort();
}

Sandbox::~Sandbox() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string Sandbox::file(const std::string& name) const {
    return path_ + "/" + name;
}

void Sandbox::write(const std::string& name, const std::string& content) const {
    std::ofstream(file(name), std::ios::binary) << content;
}

void Sandbox::mkdir(const std::string& name) const {
    if (::mkdir(file(name).c_str(), 0755) != 0) std::abort();
}

void Sandbox::link(const std::string& target, const std::string& name) const {
    if (symlink(target.c_str(), file(name).c_str()) != 0) std::abort();
}

}  // namespace dorn
