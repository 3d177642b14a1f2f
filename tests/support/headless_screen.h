// A screen without a screen: the functions of ui/ that engine code calls, for its tests.
//
// What would have been shown is recorded; questions are answered from a script. The gate of
// ui/lock.h runs works on the calling thread, one at a time. All of it from any thread.
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
std::vector<std::string> texts(const char* instance);

/// The alerts shown, oldest first.
std::vector<Alert> alerts();

/// The answers to the coming questions, in order; where they run out an alert takes its escape
/// button, as if it had been closed.
void answer(std::vector<int> buttons);

/// Called at each alert, on its thread, before it is recorded and answered: for what happens on the
/// disk while a question is open. It may script the answer.
void on_alert(std::function<void(const Alert&)> hook);

/// Called whenever the engine serves the event loop.
void on_background(std::function<void()> hook);

}  // namespace dorn::headless
