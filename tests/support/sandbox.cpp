#include "support/sandbox.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {

std::string read_file(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

Sandbox::Sandbox() : Sandbox(std::filesystem::temp_directory_path().string()) {}

Sandbox::Sandbox(const std::string& parent) : path_(parent + "/dorn-XXXXXX") {
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

void Sandbox::script(const std::string& name, const std::string& lines) const {
    write(name, "#!/bin/sh\n" + lines + "\n");
    if (chmod(file(name).c_str(), 0755) != 0) std::abort();
}

std::string Sandbox::read(const std::string& name) const {
    return read_file(file(name));
}

void Sandbox::mkdir(const std::string& name) const {
    if (::mkdir(file(name).c_str(), 0755) != 0) std::abort();
}

void Sandbox::link(const std::string& target, const std::string& name) const {
    if (symlink(target.c_str(), file(name).c_str()) != 0) std::abort();
}

}  // namespace dorn
