// orterm [-z] [-U] [--help] [command...]: a terminal window, or a command in one.

#include "attach.h"
#include "emulator.h"
#include "platform/standard_descriptors.h"
#include "pty.h"
#include "session.h"

#include <cstdio>
#include <cstring>
#include <getopt.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace dorn {
namespace {

constexpr const char* kUsage = R"(usage: orterm [-z] [-U] [--help] [command [argument...]]

Without a command: opens the user's terminal in the current directory. That is
$TERMINAL, xdg-terminal-exec, x-terminal-emulator or the first known terminal
emulator that is installed.

With a command: runs it in a window of such a terminal. The arguments are the
command's own; no shell looks at them.

  -z      the window stays after the command has ended, until a key is pressed
  -U      no window until the command writes something or wants input; a command
          that ends silently never shows one. Such a window closes with the
          command, except that it waits for a key when the command failed, or
          ended within five seconds without anything having been typed
  --help  this text

Closing the window hangs the command up. Where no window can be had, the command
runs on the terminal that orterm was started from; without one its output goes
to standard error, and it is hung up when it wants input.

The exit status is the command's; 128 and the signal's number when a signal
ended it; 126 when it can't be run; 127 when it is not found, or, without a
command, when no terminal is.
)";

/// Becomes the user's terminal. Returns only when there is none: the exit status.
int become_terminal() {
    reset_signals();  // what a shell ignores for its background, a terminal's shell would ignore
                      // too
    for (const Emulator& emulator : find_emulators())
        execv(emulator.program[0].c_str(), exec_words(emulator.program).data());
    std::fputs(
        "orterm: no terminal emulator is installed, or there is no display; "
        "$TERMINAL may name one\n",
        stderr);
    return 127;
}

int run(int argc, char** argv) {
    constexpr int kHelp = 1;
    constexpr int kAttach = 2;
    // --attach is for the process in the window alone, and so is not in the usage.
    const option long_options[] = {{"help", no_argument, nullptr, kHelp},
                                   {"attach", required_argument, nullptr, kAttach},
                                   {nullptr, 0, nullptr, 0}};
    SessionOptions options;
    for (int option = 0; (option = getopt_long(argc, argv, "+zU", long_options, nullptr)) != -1;) {
        switch (option) {
            case 'z':
                options.keep_window = true;
                break;
            case 'U':
                options.late_window = true;
                break;
            case kHelp:
                std::fputs(kUsage, stdout);
                return 0;
            case kAttach:
                return attach_run(optarg);
            default:
                std::fputs(kUsage, stderr);
                return 2;
        }
    }
    if (optind == argc) return become_terminal();
    return session_run(options, {argv + optind, argv + argc});
}

}  // namespace
}  // namespace dorn

int main(int argc, char** argv) {
    dorn::hold_standard_descriptors();
    return dorn::run(argc, argv);
}
