// The questions that Copy To and Move To ask. Event-loop thread only.
#pragma once

#include <optional>
#include <string>

namespace dorn {

/// Asks "Do you want to VERB WHAT to DESTINATION": 1 for yes. `what` is a display text,
/// `destination` bytes.
int confirm(const char* verb, const char* what, const char* destination);

struct Destination {
    std::string text;                 // as typed
    std::optional<std::string> path;  // bytes; nothing when the text can't be encoded
};

/// Asks for a directory in a field with the history of destinations, where Tab completes a
/// directory's name; nothing when the user cancels. What was entered goes into the history.
std::optional<Destination> input_dest(const char* title);

}  // namespace dorn
