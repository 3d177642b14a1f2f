// Arbitrary templates and names: whatever a harmless name does to a command line, a hostile one
// does the same or is refused: read as a shell reads quotes, both have the same words around them.
#include "assoc/engine/command.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

// What stands outside of all quotes, the rest as "_"; as a shell sees it that knows apostrophes,
// double quotes, backslashes and comments.
std::string outside_of_quotes(std::string_view line) {
    std::string outside;
    char quote = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quote == '\'') {
            if (c == '\'') quote = 0;
        } else if (c == '\\' && i + 1 < line.size()) {
            ++i;
            if (quote == 0) outside += '_';
        } else if (quote == '"') {
            if (c == '"') quote = 0;
            if (c == '$' || c == '`') outside += c;  // acts there as well
        } else if (c == '\'' || c == '"') {
            quote = c;
        } else {
            outside += c;
        }
    }
    return outside + (quote == 0 ? "" : "unfinished");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::string command = text.c_str();
    const std::string name =
        command.size() < text.size() ? text.substr(command.size() + 1).c_str() : "";
    if (name.empty()) return 0;
    std::string names;
    if (dorn::add_name(&names, name) != dorn::add_name(nullptr, name)) std::abort();
    const auto line = dorn::command_line(command, names);
    const auto harmless = dorn::command_line(command, "'x' ");
    if (!harmless) std::abort();
    if (!line) return 0;
    // Comments are left to the tests: there a hostile name is left out.
    if (command.find('#') != std::string::npos) return 0;
    if (outside_of_quotes(*line) != outside_of_quotes(*harmless)) std::abort();
    return 0;
}
