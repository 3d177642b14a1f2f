#include "platform/usage.h"

#include <algorithm>
#include <charconv>
#include <getopt.h>
#include <string_view>
#include <vector>

namespace dorn {

namespace {

constexpr std::string_view kUsage =
    "%C - This is a Kestrel/Orrin Application.\n"
    "\n"
    "%C [options]\n"
    "\n"
    "Options:\n"
    "  -s server   Server path or device name\n"
    "  -x x        Initial x position\n"
    "  -y y        Initial y position\n"
    "  -h h        Initial h dimension\n"
    "  -w w        Initial w dimension\n"
    "  -S i|m|n    Initial window state: i=iconified, m=maximized, n=normal\n"
    "\n"
    "Examples:\n"
    "  %C -s :1\n"
    "    Run on the server device :1.\n"
    "  %C -s node2:0\n"
    "    Run on the server :0 of the network node node2.\n"
    "  %C -x10 -y10 -h200 -w300\n"
    "    Run at initial position 10,10 with initial dimension of 200x300.\n";

// The leading "-" lets options stand behind the directory, the ":" leaves the messages to us.
constexpr const char* kOptions = "-:s:x:y:h:w:S:";
constexpr int kDirectory = 1;  // what getopt calls an argument that is no option
constexpr int kHelp = 2;
constexpr option kLongOptions[] = {{"help", no_argument, nullptr, kHelp}, {}};

std::optional<int> number(std::string_view text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::optional<int> dimension(std::string_view text) {
    const std::optional<int> value = number(text);
    return value > 0 ? value : std::nullopt;
}

std::optional<WindowOptions::State> state(std::string_view text) {
    if (text == "i") return WindowOptions::State::Iconified;
    if (text == "m") return WindowOptions::State::Maximized;
    if (text == "n") return WindowOptions::State::Normal;
    return std::nullopt;
}

/// Takes the value of one option. False when it can't be one.
bool take_value(int option_letter, const char* value, WindowOptions* options) {
    switch (option_letter) {
        case 's':
            options->server = value;
            return true;
        case 'x':
            return (options->x = number(value)).has_value();
        case 'y':
            return (options->y = number(value)).has_value();
        case 'h':
            return (options->height = dimension(value)).has_value();
        case 'w':
            return (options->width = dimension(value)).has_value();
        default:
            break;
    }
    const std::optional<WindowOptions::State> wanted = state(value);
    options->state = wanted.value_or(WindowOptions::State::Normal);
    return wanted.has_value();
}

}  // namespace

std::string usage_text(const std::string& program) {
    std::string text(kUsage);
    constexpr std::string_view mark = "%C";
    for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos; at += program.size())
        text.replace(at, mark.size(), program);
    return text;
}

WindowOptions usage_parse(int argc, const char* const* argv, std::string* error) {
    error->clear();
    WindowOptions options;
    std::vector<std::string> texts(argv, argv + argc);
    std::vector<char*> copy(texts.size() + 1, nullptr);
    std::transform(texts.begin(), texts.end(), copy.begin(),
                   [](auto& text) { return text.data(); });

    optind = 0;  // begins a scan of its own, whatever was scanned before
    int found = 0;
    while ((found = getopt_long(argc, copy.data(), kOptions, kLongOptions, nullptr)) != -1) {
        const std::string letter(1,
                                 static_cast<char>(found == ':' || found == '?' ? optopt : found));
        if (found == kHelp) {
            options.help = true;
        } else if (found == ':') {
            *error = "option -" + letter + " needs a value";
        } else if (found == '?') {
            const bool is_long = optopt == 0 || optopt == kHelp;
            *error = "unknown option " +
                     (is_long ? copy[static_cast<std::size_t>(optind - 1)] : "-" + letter);
        } else if (found != kDirectory && !take_value(found, optarg, &options)) {
            *error = "option -" + letter + " can't be \"" + optarg + "\"";
        }
        if (!error->empty()) break;
    }
    options.help = options.help || !error->empty();
    return options;
}

}  // namespace dorn
