// Which terminal emulator opens the window, and how each is told what to run in it.
#pragma once

#include <string>
#include <vector>

namespace dorn {

/// How a terminal emulator takes its arguments.
struct EmulatorForm {
    const char* name;     ///< its program's
    const char* title;    ///< option for the window's title, the value following it, in the same
                          ///< word when this ends in "="; null when there is none
    const char* execute;  ///< what stands before the program to run; null when nothing does
    bool one_word;        ///< the command line is one word, which it splits itself
    const char* type;     ///< TERM of what runs in it
};

struct Emulator {
    std::vector<std::string> program;  ///< its path, and the arguments that the user gave it
    const EmulatorForm* form;
};

/// The terminal emulators of this machine that are worth trying, best first: $TERMINAL (a program,
/// or one with arguments), the desktop's and the system's choice, then known ones. Without a
/// display only $TERMINAL.
std::vector<Emulator> find_emulators();

/// The words that start the emulator with `command` running in a window of that title.
std::vector<std::string> emulator_words(const Emulator& emulator, const std::string& title,
                                        const std::vector<std::string>& command);

/// The path of an executable program along PATH, or itself when it holds a "/"; empty when there
/// is none.
std::string find_program(const std::string& name);

}  // namespace dorn
