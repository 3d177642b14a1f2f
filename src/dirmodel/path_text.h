// Paths as text. Nothing here asks the file system. Paths are bytes.
#pragma once

#include <cstddef>
#include <string>

namespace dorn {

inline constexpr std::size_t kPathSize = 1024;

/// Joins two path pieces, either of which may be null: one "/" between them unless `dir` ends or
/// `name` begins with one; trailing slashes go while the text has at least 3 bytes.
std::string es_construct_fullpath(const char* dir, const char* name);

/// Makes each run of slashes after the first character one slash and removes a trailing slash,
/// unless the text is "/" alone, in place. Returns `path`.
char* es_strip_pathname(char* path);
std::string es_strip_pathname(std::string path);

/// Cuts the last component: "/usr/local" becomes "/usr", "/usr" becomes "/", "/" stays. Returns the
/// length left.
std::size_t es_remove_subdirectory(char* path);
std::size_t es_remove_subdirectory(std::string* path);

/// 1 if every character of `text` is a decimal digit (an empty text, too), else 0.
int misc_all_digits(const char* text);

}  // namespace dorn
