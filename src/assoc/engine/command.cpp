#include "assoc/engine/command.h"

#include "dirmodel/dir_entry.h"
#include "platform/spawn.h"

#include <cstring>
#include <new>
#include <optional>
#include <string_view>

namespace dorn {

namespace {

constexpr const char* kTerminal = "/usr/orrin/bin/orterm";
constexpr const char* kShell = "/bin/sh";
constexpr const char* kWhiteSpace = " \t\n\v\f\r";
constexpr std::size_t kLongestWord = 100000;  // the system takes less than 131072 bytes

bool is_selected(const DirEntry& entry) {
    return (entry.flags & kEntrySelected) != 0;
}

bool focused_directory_is_refused() {
    if (gDir == nullptr || gDir->n_selected != 1) return false;
    if (gDir->current < 0 || gDir->current >= gDir->count) return false;
    return is_directory(*gDir->entries[gDir->current]);
}

/// The quoted names of the selected entries in list order; nothing when there are none or a
/// directory is among them.
std::optional<std::string> selected_names() {
    if (gDir == nullptr || gDir->n_selected == 0) return std::nullopt;
    std::string names;
    for (int32_t i = 0; i < gDir->count; ++i) {
        const DirEntry& entry = *gDir->entries[i];
        if (!is_selected(entry)) continue;
        if (is_directory(entry)) return std::nullopt;
        add_name(&names, entry.name);
    }
    return names;
}

std::optional<std::string> names_for(const char* name) {
    if (name == nullptr) return selected_names();
    std::string names;
    add_name(&names, name);
    return names;
}

bool is_terminal_command(std::string_view command) {
    constexpr std::string_view word = "orterm";
    if (!command.starts_with(word)) return false;
    return command.size() == word.size() || std::strchr(kWhiteSpace, command[word.size()]);
}

int start(const std::string& path, const std::vector<std::string>& arguments) {
    return path.empty() || spawn_program(path, arguments) == -1 ? -1 : 0;
}

/// The words that have a shell run the line. One that is too long to be a word, with the names of
/// thousands of files, is cut up; the shell puts it together again.
std::vector<std::string> shell_words(const char* shell, std::string_view line) {
    if (line.size() <= kLongestWord) return {shell, "-c", std::string(line)};
    std::vector<std::string> pieces;
    std::string joined;
    for (; !line.empty(); line.remove_prefix(pieces.back().size())) {
        pieces.emplace_back(line.substr(0, kLongestWord));
        joined += "${" + std::to_string(pieces.size()) + "}";
    }
    std::vector<std::string> words = {shell, "-c", "eval \"" + joined + "\"", shell};
    words.insert(words.end(), pieces.begin(), pieces.end());
    return words;
}

}  // namespace

int file_cmd(const char* command, const char* name) {
    if (focused_directory_is_refused()) return -1;
    command += std::strspn(command, kWhiteSpace);
    if (*command == '\0') return 0;
    try {
        const std::optional<std::string> names = names_for(name);
        if (!names) return -1;
        const std::optional<std::string> line = command_line(command, *names);
        return line ? misc_run(0, 0, line->c_str()) : -1;
    } catch (const std::bad_alloc&) {
        return -1;
    }
}

int misc_run(int input_group, int keep, const char* command) {
    command += std::strspn(command, kWhiteSpace);
    if (*command == '\0') return -1;
    set_environment("ORNIG", std::to_string(input_group));  // the group of children's windows
    if (is_terminal_command(command))
        return start(kShell, shell_words("sh", std::string("exec ") + command + " &"));
    std::vector<std::string> words = shell_words(kShell, command);
    words.insert(words.begin(), {kTerminal, keep != 0 ? "-zU" : "-U"});
    return start(orrin_program(kTerminal), words);
}

int misc_spawn(int, const std::vector<std::string>& arguments) {
    if (arguments.empty()) return -1;
    return start(orrin_program(arguments.front()), arguments);
}

}  // namespace dorn
