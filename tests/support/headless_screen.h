// A screen without a screen: the functions of ui/ that engine code calls, for its tests.
//
// What would have been shown is recorded; questions are answered from a script.
#pragma once

#include "ui/widget.h"

#include <functional>
#include <string>
#include <vector>

namespace dorn::headless {

struct Alert {
    std::string title;
    std::string message;
    std::string buttons;
};

/// Forgets everything recorded and scripted.
void reset();

/// The texts put into the widget of that instance name, oldest first.
std::vector<std::string> texts(const std::string& instance);

/// The alerts shown, oldest first.
const std::vector<Alert>& alerts();

/// The answers to the coming questions, in order; where they run out an alert takes its escape
/// button, as if it had been closed.
void answer(std::vector<int> buttons);

/// Called whenever the engine serves the event loop; how often that was.
void on_background(std::function<void()> hook);
int background_calls();

}  // namespace dorn::headless
