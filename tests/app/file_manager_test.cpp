// "Show in folder" of other programs: calls over a message bus of the test's own.
#include "app/show_request.h"
#include "dirmodel/dir_entry.h"
#include "support/child.h"
#include "support/sandbox.h"
#include "support_gui/window_test.h"
#include "ui/qt_widget.h"

#include <QDialog>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

namespace dorn {
namespace {

constexpr const char* kService = "org.freedesktop.FileManager1";
constexpr const char* kBusProgram = "/usr/bin/dbus-daemon";
constexpr const char* kCaller = "/usr/bin/gdbus";

class FileManager : public ::testing::Test {
  protected:
    void SetUp() override {
        if (access(kBusProgram, X_OK) != 0 || access(kCaller, X_OK) != 0) GTEST_SKIP();
        sandbox_.mkdir("home");
        sandbox_.mkdir("home/.or");
        sandbox_.mkdir("shown");
        for (const char* name : {"shown/a", "shown/b", "shown/\xff x"})
            sandbox_.write(name);
        const std::string address = "unix:path=" + sandbox_.file("bus");
        setting_.variables = {{"HOME", sandbox_.file("home")},
                              {"DBUS_SESSION_BUS_ADDRESS", address},
                              {"NO_AT_BRIDGE", "1"},
                              {"DISPLAY", ""}};
        setting_.output = sandbox_.file("output");
        setting_.errors = sandbox_.file("errors");
        setting_.before = [] { setpgid(0, 0); };
        bus_ =
            start_child({kBusProgram, "--session", "--nofork", "--address=" + address}, setting_);
        ASSERT_TRUE(wait_until([&] { return access(sandbox_.file("bus").c_str(), F_OK) == 0; }));
        first_ = start_child({DORN_PROGRAM, sandbox_.file("home")}, setting_);
        ASSERT_TRUE(wait_until([&] { return call("org.freedesktop.DBus.Peer.Ping", {}) == 0; }));
    }
    void TearDown() override {
        for (const auto& [pid, variables] : opened())
            kill(pid, SIGKILL);
        if (first_ > 0) {
            kill(first_, SIGTERM);
            EXPECT_EQ(end_of_child(first_), 0) << read_file(setting_.errors);
        }
        if (bus_ > 0) {
            kill(bus_, SIGTERM);
            end_of_child(bus_);
        }
    }

    // The exit status of the call's program.
    int ask(const char* service, const char* object, const std::string& method,
            const std::vector<std::string>& arguments) const {
        std::vector<std::string> words = {kCaller, "call", "--session", "-d",  service,
                                          "-o",    object, "-m",        method};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return end_of_child(start_child(words, setting_));
    }
    int call(const std::string& method, const std::vector<std::string>& arguments) const {
        return ask(kService, "/org/freedesktop/FileManager1", method, arguments);
    }
    int show(const std::string& what, const std::string& uris) const {
        return call(std::string(kService) + "." + what, {"[" + uris + "]", "id_TIME7"});
    }
    std::string uri(const std::string& name) const {
        return "'file://" + sandbox_.file("shown") + "/" + name + "'";
    }

    // The processes that show the directory, with what they were started with.
    std::map<pid_t, std::string> opened() const {
        std::map<pid_t, std::string> found;
        for (const auto& process : std::filesystem::directory_iterator("/proc")) {
            const std::string path = process.path();
            const std::string command = read_file(path + "/cmdline");
            if (command != std::string("dorn\0", 5) + sandbox_.file("shown") + '\0') continue;
            found[std::stoi(process.path().filename())] = read_file(path + "/environ");
        }
        return found;
    }

    Sandbox sandbox_;
    ChildSetting setting_;
    pid_t bus_ = 0;
    pid_t first_ = 0;
};

TEST_F(FileManager, RefusesWhatIsNoLocalFileOrNotThere) {
    for (const char* uris : {"'http://example.org/a'", "'file:///%2fetc'", "'/etc'",
                             "'file://far/a'", "'file:///nowhere/a'", "'file:///tmp/..'"})
        EXPECT_NE(show("ShowItems", uris), 0) << uris;
    EXPECT_NE(show("ShowFolders", uri("a")), 0) << "a file";
    EXPECT_NE(call(std::string(kService) + ".ShowItems", {"'text'"}), 0) << "other arguments";
    EXPECT_TRUE(opened().empty());
}

TEST_F(FileManager, OpensOneWindowForADirectory) {
    const std::string here = sandbox_.file("shown");
    const std::string items = uri("a") + "," + uri("nowhere") + "," + uri("%FF%20x");
    struct Case {
        const char* method;
        std::string uris;
        std::string request;
    };
    for (const Case& row :
         {Case{"ShowItems", items, "DORN_SHOW=select/a/\xff x/" + here},
          Case{"ShowItemProperties", items, "DORN_SHOW=properties/a/\xff x/" + here},
          Case{"ShowFolders", uri(""), ""}}) {
        ASSERT_EQ(show(row.method, row.uris), 0) << read_file(setting_.errors);
        ASSERT_TRUE(wait_until([&] { return !opened().empty(); })) << row.method;
        const auto processes = opened();
        ASSERT_EQ(processes.size(), 1u) << row.method;
        const auto& [pid, variables] = *processes.begin();
        EXPECT_NE(variables.find(row.request), std::string::npos) << row.method;
        EXPECT_EQ(variables.find("DORN_SHOW") == std::string::npos, row.request.empty());
        EXPECT_NE(variables.find("XDG_ACTIVATION_TOKEN=id_TIME7"), std::string::npos);
        kill(pid, SIGKILL);
        ASSERT_TRUE(wait_until([&] { return opened().empty(); }));
    }
}

TEST_F(FileManager, TheNextInTheQueueAnswersWhenTheFirstHasEnded) {
    const pid_t next = start_child({DORN_PROGRAM, sandbox_.file("home")}, setting_);
    EXPECT_TRUE(wait_until([&] {
        ask("org.freedesktop.DBus", "/", "org.freedesktop.DBus.ListQueuedOwners", {kService});
        return read_file(setting_.output).find("', '") != std::string::npos;
    }));
    kill(first_, SIGTERM);
    EXPECT_EQ(end_of_child(first_), 0) << read_file(setting_.errors);
    first_ = next;
    EXPECT_EQ(show("ShowFolders", uri("")), 0) << read_file(setting_.errors);
    EXPECT_TRUE(wait_until([&] { return !opened().empty(); }));
}

class ShowRequestTest : public WindowTest {};

TEST_F(ShowRequestTest, SelectsInItsDirectoryAlone) {
    for (const char* name : {"a", "b", "\xff x"})
        sandbox_.write(name);
    show_sandbox();
    const std::string here = gDir->path;
    struct Case {
        std::string value;
        std::string selected;
        ShowRequest request;
    };
    std::vector<Case> rows = {{"select/b/\xff x/" + here, "b \xff x", {}},
                              {"properties/a/missing/" + here, "a", {}},
                              {"select/b//elsewhere", "a", {}},
                              {"select/b", "a", {}},
                              {"/", "a", {}}};
    // As at the start, before a thread reads the environment to start a program.
    for (Case& row : rows) {
        setenv("DORN_SHOW", row.value.c_str(), 1);
        row.request = show_request_take();
        EXPECT_EQ(getenv("DORN_SHOW"), nullptr) << "not for the programs that are started";
    }
    for (const Case& row : rows) {
        show_request_apply(row.request);
        EXPECT_EQ(selected(), row.selected) << row.value;
        auto* dialog = qt_instance<QDialog>("property_dlg");
        const bool is_open = dialog != nullptr && dialog->isVisible();
        EXPECT_EQ(is_open, row.value.starts_with("properties")) << row.value;
        if (is_open) dialog->close();
    }
}

}  // namespace
}  // namespace dorn
