#include "emulator.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {
namespace {

constexpr const char* kCommonType = "xterm-256color";

/// The contract of the alternative that distributions keep.
constexpr EmulatorForm kAlternative{"x-terminal-emulator", "-T", "-e", false, kCommonType};

/// What any program is taken for that is not in the table.
constexpr EmulatorForm kUnknown{"", nullptr, "-e", false, kCommonType};

/// In the order in which they are tried.
constexpr EmulatorForm kForms[] = {
    {"xdg-terminal-exec", nullptr, nullptr, false, kCommonType},
    kAlternative,
    {"xterm", "-T", "-e", false, kCommonType},
    {"konsole", nullptr, "-e", false, kCommonType},
    {"gnome-terminal", "--title=", "--", false, kCommonType},
    {"kgx", "--title=", "--", false, kCommonType},
    {"ptyxis", "--title=", "--", false, kCommonType},
    {"xfce4-terminal", "--title=", "-x", false, kCommonType},
    {"mate-terminal", "--title=", "-x", false, kCommonType},
    {"lxterminal", "--title=", "-e", true, kCommonType},
    {"qterminal", nullptr, "-e", false, kCommonType},
    {"alacritty", "--title", "-e", false, kCommonType},
    {"kitty", "--title", nullptr, false, kCommonType},
    {"foot", "--title", nullptr, false, kCommonType},
    {"wezterm", nullptr, "start", false, kCommonType},
    {"terminator", "--title", "-x", false, kCommonType},
    {"tilix", "--title", "-e", true, kCommonType},
    {"terminology", "-T", "-e", true, kCommonType},
    {"urxvt", "-T", "-e", false, "rxvt-unicode-256color"},
    {"urxvtcd", "-T", "-e", false, "rxvt-unicode-256color"},
    {"rxvt", "-T", "-e", false, "rxvt"},
    {"mlterm", "-T", "-e", false, kCommonType},
    {"uxterm", "-T", "-e", false, kCommonType},
    {"lxterm", "-T", "-e", false, kCommonType},
    {"st", "-T", "-e", false, "st-256color"},
    {"stterm", "-T", "-e", false, "st-256color"},
};

std::string last_component(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

std::string real_path(const std::string& path) {
    char* resolved = realpath(path.c_str(), nullptr);
    std::string result = resolved ? resolved : path;
    std::free(resolved);
    return result;
}

const EmulatorForm* form_of(const std::string& name) {
    const auto* form = std::find_if(std::begin(kForms), std::end(kForms),
                                    [&](const EmulatorForm& row) { return name == row.name; });
    return form == std::end(kForms) ? nullptr : form;
}

/// The form of a program by its own name, or by that of what it is a link to.
const EmulatorForm& form_of_program(const std::string& path) {
    const EmulatorForm* linked = form_of(last_component(real_path(path)));
    if (linked) return *linked;
    const EmulatorForm* own = form_of(last_component(path));
    return own ? *own : kUnknown;
}

/// Appends a terminal unless it is not there, is this program, or is in the list already.
void append(std::vector<Emulator>& list, std::vector<std::string> program) {
    if (program.empty()) return;
    program[0] = find_program(program[0]);
    if (program[0].empty()) return;
    const std::string real = real_path(program[0]);
    if (last_component(real) == "orterm") return;
    for (const Emulator& other : list)
        if (real_path(other.program[0]) == real) return;
    const EmulatorForm& form = form_of_program(program[0]);
    list.push_back({std::move(program), &form});
}

/// $TERMINAL is the name of a program, or, where there is none of that name, one with arguments.
void append_from_environment(std::vector<Emulator>& list) {
    const char* value = std::getenv("TERMINAL");
    if (!value || !*value) return;
    const size_t before = list.size();
    append(list, {value});
    if (list.size() != before) return;
    std::istringstream words(value);
    std::vector<std::string> program;
    for (std::string word; words >> word;)
        program.push_back(word);
    append(list, std::move(program));
}

bool has_value(const char* variable) {
    const char* value = std::getenv(variable);
    return value && *value;
}

/// The command as one word that a splitter of command lines takes apart again.
std::string quoted(const std::vector<std::string>& command) {
    std::string line;
    for (const std::string& word : command) {
        if (!line.empty()) line += ' ';
        line += '\'';
        for (const char byte : word)
            line += byte == '\'' ? std::string("'\\''") : std::string{byte};
        line += '\'';
    }
    return line;
}

}  // namespace

std::vector<Emulator> find_emulators() {
    std::vector<Emulator> list;
    append_from_environment(list);
    if (!has_value("DISPLAY") && !has_value("WAYLAND_DISPLAY")) return list;
    for (const EmulatorForm& form : kForms)
        append(list, {form.name});
    return list;
}

std::vector<std::string> emulator_words(const Emulator& emulator, const std::string& title,
                                        const std::vector<std::string>& command) {
    std::vector<std::string> words = emulator.program;
    const EmulatorForm& form = *emulator.form;
    if (form.title && form.title[std::strlen(form.title) - 1] == '=') {
        words.push_back(form.title + title);
    } else if (form.title) {
        words.emplace_back(form.title);
        words.push_back(title);
    }
    if (form.execute) words.emplace_back(form.execute);
    if (form.one_word) {
        words.push_back(quoted(command));
    } else {
        words.insert(words.end(), command.begin(), command.end());
    }
    return words;
}

std::string find_program(const std::string& name) {
    const auto executable = [](const std::string& path) {
        struct stat status {};
        return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
               access(path.c_str(), X_OK) == 0;
    };
    if (name.empty()) return {};
    if (name.find('/') != std::string::npos) return executable(name) ? name : std::string();
    const char* path = std::getenv("PATH");
    std::istringstream folders(path ? path : "/usr/local/bin:/usr/bin:/bin");
    for (std::string folder; std::getline(folders, folder, ':');) {
        std::string candidate = (folder.empty() ? "." : folder) + "/" + name;
        if (executable(candidate)) return candidate;
    }
    return {};
}

}  // namespace dorn
