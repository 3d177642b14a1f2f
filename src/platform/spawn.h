// Starting programs without waiting for them and without leaving zombies.
//
// Children get default signal dispositions, an empty signal mask, a process group of their own, the
// program's environment and no descriptor beyond the three standard ones. No copy of the address
// space is made, so starting costs the same however large the program is. Any thread.
#pragma once

#include <string>
#include <vector>

namespace dorn {

/// The program that an Orrin path or a bare name stands for: an absolute path that is executable is
/// taken as it is; one under /usr/orrin/bin that is not there is looked up by its last component
/// along PATH, "dorn" being the running executable, even when its file has been deleted or
/// replaced; a name without "/" is looked up along PATH. Empty when there is none.
std::string orrin_program(const std::string& program);

/// Sets a variable of the program's environment, which its children get. Any thread; programs that
/// are being started meanwhile get the variable as it was or as it is.
void set_environment(const char* name, const std::string& value);

/// The executable file `name` in the first of the colon-separated `folders` that has it (an empty
/// one is the working directory); empty when none has.
std::string find_program(const std::string& name, const std::string& folders);

/// Appends the folder of the adaptor programs to PATH, so that a real command of such a name wins.
/// The folder is the running executable's own in an installation, orrin/ beside it in a build tree.
/// Without one, or with it there already, PATH stays. Called once at start-up.
void orrin_append_adaptors_to_path();

/// The adaptor program `name` of the folder that was found at start-up, also where PATH has another
/// of that name; empty when there is none. After orrin_append_adaptors_to_path.
std::string orrin_adaptor(const std::string& name);

/// What a child's standard descriptors are; -1 leaves ours.
struct SpawnFiles {
    int input = -1;
    int output = -1;
};

/// Starts the executable `path` with `arguments` (the first is its name). `variables`, as
/// "NAME=value", stand before those of the program's environment. Returns the process id, or -1
/// with errno set.
int spawn_program(const std::string& path, const std::vector<std::string>& arguments,
                  const SpawnFiles& files = {}, const std::vector<std::string>& variables = {});

}  // namespace dorn
