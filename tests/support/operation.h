// File operations run to their end on the headless screen, and what they leave behind.
//
//     const Tree before = tree_of(sandbox.file("from"));
//     run_operation({kFopMove, sandbox.file("from"), {"a"}, sandbox.file("to")});
//     EXPECT_EQ(tree_of(sandbox.file("to")), before);
#pragma once

#include "fileops/engine/fop.h"

#include <map>
#include <string>
#include <vector>

namespace dorn {

struct Request {
    int32_t kind;
    std::string directory;
    std::vector<std::string> names;
    std::string destination;
    uint32_t flags = 0;
    int (*on_item_done)(const char* directory, const char* name) = nullptr;
};

/// Starts the operation and returns when its thread is gone and its record freed; the milliseconds
/// from the start until the slot was handed back, -1 when it did not start.
double run_operation(const Request& request);

/// The running operation's record, for what happens in the middle of it: on the worker's thread or
/// while that waits.
FileOp* running_operation();

/// Below a directory: relative path, and what is there: "/" a directory, "|" a FIFO, ">" and the
/// target, "=" and the content, "?" anything else.
using Tree = std::map<std::string, std::string>;
Tree tree_of(const std::string& directory);

/// The number of the button with that label, its marks left out; 0 when there is none.
int button_of(const std::string& buttons, const std::string& label);

/// Descriptors that this process has open.
long open_descriptors();

}  // namespace dorn
