#include "support/sandbox.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {

std::vector<std::string> hostile_names() {
    // clang-format off
    return {"plain.txt", "a  b\t.txt", " ", "~", "-r", "-rf", "--help", "new\nline", "end\n",
            "it's \"$(touch owned)\"", "`touch owned`", "*; touch owned &", "[a]*?", "<b>bold",
            "100%s%n.html", "back\\nslash\\", "bad\xff\x81utf", "caf\xc3\xa9", "\x01",
            "\xe2\x80\xaeright", std::string(255, 'x')};
    // clang-format on
}

std::string read_file(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
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
