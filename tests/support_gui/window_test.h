// The fixture of tests that need the whole main window, offscreen: one window a process, a sandbox
// a test, the pane put back to its start between tests, menus and dialogs closed.
#pragma once

#include "config/config.h"
#include "filelist/filelist.h"
#include "filelist/navigation.h"
#include "filelist/selection.h"
#include "support/sandbox.h"
#include "ui/qt_widget.h"

#include <QApplication>
#include <QMainWindow>
#include <QTest>

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
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
    /// The text of the label, the field or the combo box of that instance name.
    static std::string text_of(const char* instance);

    /// Presses keys in the file list, as typed.
    static void type(const char* text);
    static void press(int key, Qt::KeyboardModifiers held = Qt::NoModifier);
    /// Clicks on the row of an entry; a double click with `twice`.
    static void click(const std::string& name, Qt::KeyboardModifiers held = Qt::NoModifier,
                      bool twice = false);

    /// What stat tells of a name in the sandbox as its mode; 0: there is nothing.
    mode_t mode_of(const std::string& name) const;

    /// Selects the entries of these names alone, as clicks with Ctrl do.
    static void select(const std::vector<std::string>& names);

    /// What the alerts that `act` leads to say, as "title: text" and a line each. Each is ended by
    /// the button of that label, else closed.
    static std::string alerts_of(const std::function<void()>& act, const char* button = "");

    /// Waits until no operation runs; a question of one is closed and fails the test.
    static void await_operations();

    /// The dialogs, by the instance names of their widgets. What a test leaves open is closed.
    static bool is_open(const char* dialog);
    static void push(const char* button);
    /// Sets the text of an entry field or of a combo box.
    static void enter(const char* field, const std::string& text);
    static void press_in(const char* widget, Qt::Key key);
    /// Waits for the widget to have the keyboard; false when it gets it not.
    static bool gets_focus(const char* widget);

    Sandbox sandbox_;
    static QMainWindow* window_;
};

}  // namespace dorn
