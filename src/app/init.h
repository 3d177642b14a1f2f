// Everything before the main window opens: start path, configuration directory and record,
// file-name translation, input histories, associations, the way to the adaptor programs.
#pragma once

#include <string>

namespace dorn {

/// Does all of it. Returns 0; what fails is told on standard error and the program goes on,
/// except after a damaged association file (see init_read_associations).
int init(int argc, char** argv);

/// The directory to show first: the first argument that does not begin with "-" when it is a
/// directory, else the current directory, else "/".
std::string init_start_path(int argc, char** argv);

/// The usable configuration directory, made when missing; empty when it can't be used (told on
/// standard error). `home` is null when HOME is unset.
std::string init_config_directory(const char* home);

}  // namespace dorn
