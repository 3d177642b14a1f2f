#include "title.h"

namespace dorn {
namespace {

constexpr size_t kLongestTitle = 200;

bool continues(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// The length of the UTF-8 sequence that begins at `at`, 0 when it is not valid.
size_t sequence_length(const std::string& text, size_t at) {
    const auto lead = static_cast<unsigned char>(text[at]);
    const size_t length = lead < 0x80                   ? 1
                          : lead >= 0xC2 && lead < 0xE0 ? 2
                          : lead >= 0xE0 && lead < 0xF0 ? 3
                          : lead >= 0xF0 && lead < 0xF5 ? 4
                                                        : 0;
    if (length == 0 || at + length > text.size()) return 0;
    for (size_t index = 1; index < length; ++index)
        if (!continues(text[at + index])) return 0;
    if (length < 3) return length;
    const auto second = static_cast<unsigned char>(text[at + 1]);
    const bool beyond = (lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
                        (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F);
    return beyond ? 0 : length;
}

bool is_utf8(const std::string& text) {
    for (size_t at = 0; at < text.size();) {
        const size_t length = sequence_length(text, at);
        if (length == 0) return false;
        at += length;
    }
    return true;
}

/// Whether a control character begins there, of one byte or, in valid UTF-8, of two.
bool is_control(const std::string& text, size_t at) {
    const auto byte = [&](size_t index) { return static_cast<unsigned char>(text[index]); };
    if (byte(at) < 0x20 || byte(at) == 0x7F) return true;
    return byte(at) == 0xC2 && at + 1 < text.size() && byte(at + 1) < 0xA0;
}

bool is_shell_line(const std::vector<std::string>& command) {
    return command.size() == 3 && command[1] == "-c" &&
           (command[0] == "sh" || command[0] == "/bin/sh");
}

}  // namespace

std::string window_title(const std::vector<std::string>& command) {
    std::string title;
    if (is_shell_line(command)) {
        title = command[2];
    } else {
        for (const std::string& word : command)
            title += (title.empty() ? "" : " ") + word;
    }
    const bool valid = is_utf8(title);
    for (size_t at = 0; at < title.size(); ++at) {
        const bool above = static_cast<unsigned char>(title[at]) > 0x7F;
        if (above && !valid)
            title[at] = '?';
        else if (is_control(title, at))
            title.replace(at, above ? 2 : 1, "?");
    }
    if (!title.empty() && title[0] == '-') title.insert(0, 1, ' ');
    if (title.size() > kLongestTitle) {
        size_t end = kLongestTitle;
        while (end > 0 && continues(title[end]))
            --end;
        title.resize(end);
    }
    return title;
}

}  // namespace dorn
