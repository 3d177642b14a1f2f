// A screen without a screen: the functions of ui/ that engine code calls, for its tests.
//
//     gScreen = {};                       // forgets all
//     gScreen.answers = {2};              // to the first question
//     run_operation(...);
//     EXPECT_EQ(gScreen.alerts.size(), 1U);
//
// What would have been shown is recorded; questions are answered from a script. The gate of
// ui/lock.h runs works on the calling thread, one at a time. One thread uses all this at a time:
// the test, or the worker that it waits for.
#pragma once

#include "ui/widget.h"

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace dorn {

struct Widget {
    std::vector<std::string> texts;  // put into it, oldest first
};

namespace headless {

struct Alert {
    std::string title;
    std::string message;
    std::string buttons;
};

struct Screen {
    std::map<std::string, Widget> widgets = {};  // by instance name
    std::vector<Alert> alerts = {};              // shown, oldest first
    // To the coming questions, in order; where they run out an alert takes its escape button, as if
    // it had been closed.
    std::deque<int> answers = {};
    // Called at each alert, on its thread, before it is recorded and answered: for what happens on
    // the disk while a question is open. It may script the answer.
    std::function<void(const Alert&)> on_alert = {};
    std::function<void()> on_background = {};  // when the engine serves the event loop
};

}  // namespace headless

extern headless::Screen gScreen;

}  // namespace dorn
