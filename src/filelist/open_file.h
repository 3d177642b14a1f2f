// Opening a file of the list. Event-loop thread only.
#pragma once

#include <cstdint>
#include <string>

namespace dorn {

/// Runs the open command of every association whose pattern matches the name of entry `index`,
/// which is no directory. When none matches and its owner may execute the file, runs the file.
void open_file(int32_t index);

/// The command line that runs the file `name` of the working directory: "./name", its name in
/// quotes when it holds anything that a shell could take for more than a part of a name.
std::string run_command(const std::string& name);

}  // namespace dorn
