// File lists between whole processes on a real X server: windows of ours, other programs, owners
// that hang, and what is left when the program has ended.
#include "support/child.h"
#include "support/sandbox.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace dorn {
namespace {

constexpr const char* kServer = "/usr/bin/Xvfb";

// The standard output of a shell command.
std::string output_of(const std::string& command) {
    std::string text;
    FILE* pipe = popen((command + " 2>/dev/null").c_str(), "r");
    for (int c = 0; (c = fgetc(pipe)) != EOF;)
        text.push_back(static_cast<char>(c));
    pclose(pipe);
    return text;
}

// Whether it comes to hold without a wait for a program that hangs.
bool soon(const std::function<bool()>& condition) {
    const auto start = std::chrono::steady_clock::now();
    return wait_until(condition) &&
           std::chrono::steady_clock::now() - start < std::chrono::seconds(2);
}

class Desktop : public ::testing::Test {
  protected:
    void SetUp() override {
        if (access(kServer, X_OK) != 0) GTEST_SKIP() << "no X server to test with";
        const auto is_up = [&] { return sandbox_.read("display").ends_with('\n'); };
        for (int i = 0; i < 5 && !is_up(); ++i) {  // others may start one at the same moment
            server_ = start_child({kServer, "-displayfd", "1", "-noreset", "-nolisten", "tcp"},
                                  {{}, {}, sandbox_.file("display"), sandbox_.file("log"), {}});
            wait_until([&] { return is_up() || waitpid(server_, nullptr, WNOHANG) == server_; });
        }
        ASSERT_TRUE(is_up()) << sandbox_.read("log");
        const std::string display = sandbox_.read("display");
        setenv("DISPLAY", (":" + display.substr(0, display.size() - 1)).c_str(), 1);
        for (const char* folder : {"home", "home/.or", "from", "to"})
            sandbox_.mkdir(folder);
    }
    void TearDown() override {
        while (!processes_.empty())
            stop(*processes_.begin(), SIGKILL);
        stop(server_, SIGTERM);
    }
    void stop(pid_t process, int signal) {
        processes_.erase(process);
        kill(process, signal);
        end_of_child(process);
    }

    // A program with a window; ready when its folder is shown.
    pid_t open(const std::string& folder) {
        ChildSetting setting;
        setting.variables = {{"QT_QPA_PLATFORM", "xcb"}, {"HOME", sandbox_.file("home")}};
        setting.errors = sandbox_.file("log");
        const pid_t process = start_child({DORN_PROGRAM, sandbox_.file(folder)}, setting);
        processes_.insert(process);
        const std::string link = "/proc/" + std::to_string(process) + "/cwd";
        EXPECT_TRUE(wait_until([&] {
            std::error_code error;
            return std::filesystem::read_symlink(link, error) == sandbox_.file(folder) &&
                   has_window(process);
        }));
        return process;
    }
    static std::string search(pid_t process) {
        return "xdotool search --onlyvisible --all --pid " + std::to_string(process) +
               " --class dorn ";
    }
    static bool has_window(pid_t process) {
        return !output_of(search(process)).empty();
    }
    static void press(pid_t process, const std::string& keys) {
        output_of("xdotool windowfocus --sync $(" + search(process) +
                  "| head -n 1) key --delay 30 " + keys);
    }
    static bool has_our_list() {
        return clipboard("TARGETS").find("ortransfiles") != std::string::npos;
    }
    static void select_all_and(pid_t process, const std::string& key) {
        EXPECT_TRUE(wait_until([&] {  // a window that still reads its folder takes no keys
            press(process, "ctrl+a " + key);
            return has_our_list();
        }));
    }

    static std::string clipboard(const std::string& type) {
        return output_of("timeout 5 xclip -o -selection clipboard -t " + type);
    }
    void put(const std::string& type, const std::string& bytes) const {
        sandbox_.write("item", bytes);
        output_of("xclip -i -selection clipboard -t " + type + " " + sandbox_.file("item") +
                  " >/dev/null");
    }
    std::size_t count(const std::string& folder) const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(sandbox_.file(folder)), {}));
    }

    Sandbox sandbox_;
    std::set<pid_t> processes_;
    pid_t server_ = -1;
};

TEST_F(Desktop, ListsOfProgramsThatOfferOneTypeOnlyArePasted) {
    const pid_t to = open("to");
    const std::string file = sandbox_.file("from/\xFF"),
                      uri = "file://" + sandbox_.file("from/%FF");
    const std::tuple<const char*, std::string, bool> rows[] = {
        {"text/uri-list", uri, false},
        {"x-special/mate-copied-files", "copy\n" + uri, false},
        {"x-special/gnome-copied-files", "cut\n" + uri, true}};
    for (const auto& [type, bytes, moves] : rows) {
        sandbox_.write("from/\xFF");
        put(type, bytes);
        press(to, "ctrl+v");
        EXPECT_TRUE(wait_until([&] { return count("to") == 1; })) << type;
        EXPECT_TRUE(wait_until([&] { return std::filesystem::exists(file) != moves; })) << type;
        std::filesystem::remove(sandbox_.file("to/\xFF"));
    }
}

TEST_F(Desktop, ANewerClipboardIsNotOverwrittenByAMoveThatRuns) {
    for (int i = 0; i < 2000; ++i)
        sandbox_.write("from/" + std::to_string(i));
    const pid_t from = open("from");
    const pid_t to = open("to");
    select_all_and(from, "ctrl+x");
    press(to, "ctrl+v");
    ASSERT_TRUE(wait_until([&] { return count("to") > 0; }));
    kill(to, SIGSTOP);
    EXPECT_GT(count("from"), 0u) << "the move was over too soon to tell";
    put("UTF8_STRING", "newer");
    kill(to, SIGCONT);
    EXPECT_TRUE(wait_until([&] { return count("from") == 0; }));
    stop(to, SIGTERM);  // which it takes once it has done all that the move left to do
    EXPECT_EQ(clipboard("UTF8_STRING"), "newer");
}

// A client of the X server that owns selections and never answers for them.
class HungOwner {
  public:
    explicit HungOwner(const std::vector<std::string>& selections) {
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(x())).data;
        xcb_create_window(x(), XCB_COPY_FROM_PARENT, window_, screen->root, 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        for (const std::string& name : selections)
            xcb_set_selection_owner(x(), window_, atom(name), XCB_CURRENT_TIME);
        xcb_flush(x());
    }
    bool owns(const std::string& selection) const {
        const auto cookie = xcb_get_selection_owner(x(), atom(selection));
        return owned(xcb_get_selection_owner_reply(x(), cookie, nullptr))->owner == window_;
    }

  private:
    template <class T>
    static std::unique_ptr<T, decltype(&free)> owned(T* reply) {
        return {reply, &free};
    }
    xcb_connection_t* x() const {
        return x_.get();
    }
    xcb_atom_t atom(const std::string& name) const {
        const auto size = static_cast<uint16_t>(name.size());
        const auto cookie = xcb_intern_atom(x(), 0, size, name.data());
        return owned(xcb_intern_atom_reply(x(), cookie, nullptr))->atom;
    }

    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> x_{
        xcb_connect(nullptr, nullptr), &xcb_disconnect};
    const xcb_window_t window_ = xcb_generate_id(x());
};

TEST_F(Desktop, AListOutlivesTheProgramUntilAnotherTakesTheClipboard) {
    constexpr std::size_t kMany = 400;  // of 200 bytes are more than is sent in one piece
    for (std::size_t i = 0; i < kMany; ++i)
        sandbox_.write("from/" + std::string(200, 'n') + std::to_string(i));
    sandbox_.write("from/-\xFF 'a\nb'", "bytes");
    const pid_t from = open("from");
    select_all_and(from, "ctrl+c");
    const auto contents = [] {
        std::vector<std::string> bytes;
        for (const char* type : {"text/uri-list", "application/x-ortransfiles",
                                 "x-special/gnome-copied-files", "UTF8_STRING"})
            bytes.push_back(clipboard(type));
        return bytes;
    };
    const std::vector<std::string> before = contents();
    EXPECT_GT(before[0].size(), std::size_t{64} << 10);
    stop(from, SIGTERM);
    EXPECT_TRUE(contents() == before);
    press(open("to"), "ctrl+v");
    EXPECT_TRUE(wait_until([&] { return count("to") == kMany + 1; }));
    EXPECT_TRUE(wait_until([&] { return sandbox_.read("to/-\xFF 'a\nb'") == "bytes"; }));
    put("UTF8_STRING", "newer");
    EXPECT_EQ(clipboard("UTF8_STRING"), "newer");
}

TEST_F(Desktop, AnOwnerOrAManagerThatHangsDoesNotHoldUpTheWindow) {
    sandbox_.write("from/a");
    const pid_t process = open("from");
    const HungOwner hung({"CLIPBOARD", "CLIPBOARD_MANAGER"});
    press(process, "ctrl+v alt+e Escape Escape ctrl+a ctrl+c");
    EXPECT_TRUE(soon([&] { return !hung.owns("CLIPBOARD"); }));
    {
        const HungOwner killed({"CLIPBOARD"});
        press(process, "ctrl+v");
    }  // while it is asked: the server ends its connection, as it does for a process that is killed
    press(process, "ctrl+x");
    EXPECT_TRUE(soon(has_our_list));
    EXPECT_EQ(count("from"), 1u);
    kill(process, SIGTERM);  // the toolkit waits five seconds for the manager
    EXPECT_TRUE(soon([&] { return !has_window(process); }));
}

}  // namespace
}  // namespace dorn
