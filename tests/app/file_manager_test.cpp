// "Show in folder" of other programs: calls over a message bus of the test's own.
#include "app/show_request.h"
#include "dirmodel/dir_entry.h"
#include "support/child.h"
#include "support/sandbox.h"
#include "support_gui/window_test.h"

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
            EXPECT_EQ(end_of_child(first_), 0);
        }
        if (bus_ > 0) {
            kill(bus_, SIGTERM);
            end_of_child(bus_);
        }
    }

    // The exit status of the call's program.
    int call(const std::string& method, const std::vector<std::string>& arguments) const {
        std::vector<std::string> words = {
            kCaller, "call", "--session", "-d", kService, "-o", "/org/freedesktop/FileManager1",
            "-m",    method};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return end_of_child(start_child(words, setting_));
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

TEST_F(FileManager, OpensOneWindowForTheItemsOfADirectory) {
    ASSERT_EQ(show("ShowItems", uri("a") + "," + uri("nowhere") + "," + uri("%FF%20x")), 0)
        << read_file(setting_.errors);
    ASSERT_TRUE(wait_until([&] { return !opened().empty(); }));
    const auto processes = opened();
    ASSERT_EQ(processes.size(), 1u);
    const std::string& variables = processes.begin()->second;
    EXPECT_NE(variables.find("DORN_SHOW=select/a/\xff x/" + sandbox_.file("shown")),
              std::string::npos);
    EXPECT_NE(variables.find("XDG_ACTIVATION_TOKEN=id_TIME7"), std::string::npos);
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
    };
    for (const Case& row :
         {Case{"select/b/\xff x/" + here, "b \xff x"}, Case{"select/a/missing/" + here, "a"},
          Case{"select/b//elsewhere", "a"}, Case{"select/b", "a"}, Case{"/", "a"}}) {
        setenv("DORN_SHOW", row.value.c_str(), 1);
        show_request_apply(show_request_take());
        EXPECT_EQ(selected(), row.selected) << row.value;
        EXPECT_EQ(getenv("DORN_SHOW"), nullptr) << "not for the programs that are started";
    }
}

}  // namespace
}  // namespace dorn
