#include "dirmodel/path_text.h"

#include <algorithm>
#include <cstring>

namespace dorn {

std::string es_construct_fullpath(const char* dir, const char* name) {
    if (dir == nullptr) return name == nullptr ? std::string() : std::string(name);
    std::string path = dir;
    if (name == nullptr) return path;
    if (!path.ends_with('/') && name[0] != '/') path += '/';
    path += name;
    while (path.size() >= 3 && path.ends_with('/'))
        path.pop_back();
    return path;
}

char* es_strip_pathname(char* path) {
    if (path[0] == '\0' || path[1] == '\0') return path;
    const auto both_slashes = [](char a, char b) { return a == '/' && b == '/'; };
    char* end = std::unique(path + 1, path + std::strlen(path), both_slashes);
    if (end[-1] == '/') --end;
    *end = '\0';
    return path;
}

std::string es_strip_pathname(std::string path) {
    es_strip_pathname(path.data());
    path.resize(std::strlen(path.c_str()));
    return path;
}

std::size_t es_remove_subdirectory(char* path) {
    const std::size_t length = std::strlen(path);
    for (std::size_t i = length; i-- > 2;) {
        if (path[i - 1] != '/') continue;
        path[i - 1] = '\0';
        return i - 1;
    }
    if (path[0] != '/') return length;
    path[1] = '\0';
    return 1;
}

std::size_t es_remove_subdirectory(std::string* path) {
    path->resize(es_remove_subdirectory(path->data()));
    return path->size();
}

int misc_all_digits(const char* text) {
    while (*text >= '0' && *text <= '9')
        ++text;
    return *text == '\0' ? 1 : 0;
}

}  // namespace dorn
