// The file of key bindings: for each section a line "[name]", a line "'action' modifiers key" for
// each binding with an action's active one first, and an empty line.
#include "platform/whole_file.h"
#include "ui/action_records.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>

namespace dorn {

namespace {

constexpr std::size_t kPieceLength = 31;      // what a 32-byte line buffer holds
constexpr std::size_t kFileLimit = 1u << 20;  // bytes read at most
constexpr std::string_view kNameEnd = "[]'\n";

std::optional<std::string> file_path(const char* dir, const char* name) {
    if (name == nullptr) return std::nullopt;
    return dir == nullptr ? std::string(name) : join_path(dir, name);
}

// The lines of the bindings that `action` has in `section`, those with the active flag or the
// others.
void append_bindings(std::string* text, const KeySection& section, const Action& action,
                     bool active) {
    for (const KeyGroup& group : section.groups) {
        for (const KeyBinding& binding : group.bindings) {
            if (binding.action != &action) continue;
            if (((binding.flags & kBindingActive) != 0) != active) continue;
            *text += "'" + action.name + "' " + std::to_string(group.modifiers) + " " +
                     std::to_string(binding.key) + "\n";
        }
    }
}

// Takes one line off the front of `text`: at most kPieceLength bytes, up to and with the newline. A
// longer line comes in pieces; `*cut` tells that this one goes on.
std::string_view take_piece(std::string_view* text, bool* cut) {
    const std::size_t newline = text->substr(0, kPieceLength).find('\n');
    const std::size_t length =
        newline == text->npos ? std::min(kPieceLength, text->size()) : newline + 1;
    const std::string_view piece = text->substr(0, length);
    text->remove_prefix(length);
    *cut = newline == text->npos && !text->empty() && text->front() != '\n';
    return piece;
}

std::optional<uint32_t> take_number(std::string_view* text) {
    text->remove_prefix(std::min(text->find_first_not_of(" \n"), text->size()));
    uint32_t number = 0;
    const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), number);
    if (error != std::errc()) return std::nullopt;
    text->remove_prefix(static_cast<std::size_t>(end - text->data()));
    return number;
}

void apply_binding(const std::string& section, std::string_view line) {
    const std::size_t end = std::min(line.find_first_of(kNameEnd, 1), line.size());
    const std::string action(line.substr(1, end - 1));
    line.remove_prefix(std::min(end + 1, line.size()));
    const std::optional<uint32_t> modifiers = take_number(&line);
    const std::optional<uint32_t> key = take_number(&line);
    if (modifiers && key) kb_attach(action.c_str(), section.c_str(), *modifiers, *key);
}

}  // namespace

int kb_save(const char* dir, const char* name) {
    const std::optional<std::string> path = file_path(dir, name);
    if (!path) return -1;
    std::string text;
    for (const KeySection& section : gSections) {
        text += "[" + section.name + "]\n";
        for (const Action& action : gActions) {
            append_bindings(&text, section, action, true);
            append_bindings(&text, section, action, false);
        }
        text += "\n";
    }
    return write_whole_file(*path, text);
}

int kb_load(const char* dir, const char* name) {
    const std::optional<std::string> path = file_path(dir, name);
    std::string content;
    if (!path || read_whole_file(*path, kFileLimit, &content) != 0) return -1;
    std::optional<std::string> section;
    for (std::string_view text = content; !text.empty();) {
        bool cut = false;
        const std::string_view piece = take_piece(&text, &cut);
        if (piece.front() == '[') {
            const std::size_t end = std::min(piece.find_first_of(kNameEnd, 1), piece.size());
            section = std::string(piece.substr(1, end - 1));
        } else if (piece.front() == '\'' && section && !cut) {
            apply_binding(*section, piece);
        }
    }
    return 0;
}

}  // namespace dorn
