// The fixture of tests that need the whole main window, offscreen: one window a process, a sandbox
// a test, the pane put back to its start between tests.
#pragma once

#include "support/sandbox.h"

#include <QMainWindow>

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace dorn {

class WindowTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    /// Shows the sandbox; fails the test when it can't be shown.
    void show_sandbox();

    /// The name of the entry in row order, ".." for the parent row.
    static std::string row_name(int row);
    /// The index of the entry of that name, -2 when there is none.
    static int32_t index_of(const std::string& name);
    /// The names of the selected entries, joined with blanks.
    static std::string selected();
    /// The text that the widget of that instance name shows.
    static std::string text_of(const char* instance);

    /// Presses keys in the file list, as typed.
    static void type(const char* text);
    static void press(int key, Qt::KeyboardModifiers held = Qt::NoModifier);
    /// Clicks on the row of an entry; a double click with `twice`.
    static void click(const std::string& name, Qt::KeyboardModifiers held = Qt::NoModifier,
                      bool twice = false);

    /// Selects the entries of these names alone, as clicks with Ctrl do.
    static void select(const std::vector<std::string>& names);

    /// What the alerts that `act` leads to say, as "title: text" and a line each; each is closed.
    static std::string alerts_of(const std::function<void()>& act);

    Sandbox sandbox_;
    static QMainWindow* window_;
};

}  // namespace dorn
