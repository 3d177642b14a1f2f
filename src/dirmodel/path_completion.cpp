#include "dirmodel/path_completion.h"

#include "platform/charset.h"
#include "ui/background.h"

#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>

namespace dorn {

namespace {

constexpr std::size_t kResultSize = 1280;

struct DirCloser {
    void operator()(DIR* directory) const {
        closedir(directory);
    }
};

bool names_directory(int parent, const dirent& entry) {
    if (entry.d_type == DT_DIR) return true;
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) return false;
    struct stat status;
    return fstatat(parent, entry.d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

// The bytes that both begin with, without a piece of a character at the end.
std::size_t common_length(std::string_view a, std::string_view b) {
    const std::size_t shorter = std::min(a.size(), b.size());
    const auto differ = std::mismatch(a.begin(), a.begin() + std::ptrdiff_t(shorter), b.begin());
    const auto common = static_cast<std::size_t>(differ.first - a.begin());
    std::size_t whole = 0;
    while (whole < common) {
        const std::size_t length = utf8_sequence_length(a.substr(whole));
        if (length == 0) return common;  // no UTF-8: nothing is known about its characters
        if (whole + length > common) return whole;
        whole += length;
    }
    return common;
}

struct Match {
    std::string name;
    int found = 0;  // directories that match
};

Match match_directories(const std::string& directory, const std::string& prefix) {
    Match match;
    const std::unique_ptr<DIR, DirCloser> stream(opendir(directory.c_str()));
    if (!stream) return match;
    while (const dirent* entry = readdir(stream.get())) {
        const std::string_view name = entry->d_name;
        if (name == "." || name == ".." || !name.starts_with(prefix)) continue;
        if (!names_directory(dirfd(stream.get()), *entry)) continue;
        if (++match.found == 1)
            match.name = name;
        else
            match.name.resize(common_length(match.name, name));
    }
    return match;
}

}  // namespace

std::optional<std::string> find_matching_dir(const char* text) {
    const std::string path = text == nullptr ? "" : text;
    if (!path.starts_with('/')) return std::nullopt;
    const std::size_t slash = path.rfind('/');
    const std::string directory = slash == 0 ? "/" : path.substr(0, slash);
    const std::string prefix = path.substr(slash + 1);
    const auto match = std::make_shared<Match>();
    if (!ui_bounded([=] { *match = match_directories(directory, prefix); })) return std::nullopt;
    if (match->name.empty()) return std::nullopt;
    std::string result = directory;
    if (!result.ends_with('/')) result += '/';
    result += match->name;
    if (match->found == 1) result += '/';
    if (result.size() >= kResultSize) return std::nullopt;
    return result;
}

}  // namespace dorn
