// File lists between whole processes on a real X server: windows of ours, other programs, owners
// that hang, and what is left when the program has ended.
#include "support/child.h"
#include "support/sandbox.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace dorn {
namespace {

using Clock = std::chrono::steady_clock;

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

void stop_child(pid_t child, int signal) {
    kill(child, signal);
    end_of_child(child);
}

class Desktop : public ::testing::Test {
  protected:
    void SetUp() override {
        if (access(kServer, X_OK) != 0) GTEST_SKIP() << "no X server to test with";
        std::string number;
        for (int i = 0; i < 5 && number.empty(); ++i)  // others may start one at the same moment
            number = start_server();
        ASSERT_FALSE(number.empty()) << sandbox_.read("server.log");
        setenv("DISPLAY", (":" + number).c_str(), 1);
        for (const char* folder : {"home", "home/.or", "from", "to"})
            sandbox_.mkdir(folder);
    }

    // The number of its display; empty when it did not come up.
    std::string start_server() {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) return {};
        ChildSetting setting;
        setting.errors = sandbox_.file("server.log");
        setting.before = [&] { dup2(ends[1], 3); };
        server_ =
            start_child({kServer, "-displayfd", "3", "-noreset", "-nolisten", "tcp"}, setting);
        close(ends[1]);
        std::string number;
        for (char c = 0; read(ends[0], &c, 1) == 1 && c != '\n';)
            number.push_back(c);
        close(ends[0]);
        if (number.empty()) stop_child(server_, SIGTERM);
        return number;
    }

    void TearDown() override {
        for (const auto& [process, window] : x_windows_) {
            if (kill(process, 0) == 0) stop_child(process, SIGKILL);
        }
        stop_child(server_, SIGTERM);
    }

    // A window of the program; ready when its folder is shown.
    pid_t open(const std::string& folder) {
        ChildSetting setting;
        setting.variables = {{"QT_QPA_PLATFORM", "xcb"}, {"HOME", sandbox_.file("home")}};
        setting.errors = sandbox_.file("dorn.log");
        const pid_t window = start_child({DORN_PROGRAM, sandbox_.file(folder)}, setting);
        const std::string search =
            "xdotool search --onlyvisible --all --pid " + std::to_string(window) + " --class dorn";
        EXPECT_TRUE(wait_until([&] { return !(x_windows_[window] = output_of(search)).empty(); }));
        x_windows_[window].erase(x_windows_[window].find('\n'));
        const std::string link = "/proc/" + std::to_string(window) + "/cwd";
        EXPECT_TRUE(wait_until([&] {
            std::error_code error;
            return std::filesystem::read_symlink(link, error) == sandbox_.file(folder);
        }));
        return window;
    }

    void press(pid_t window, const std::string& keys) {
        output_of("xdotool windowfocus --sync " + x_windows_[window] + " key --delay 30 " + keys);
    }

    static std::string clipboard(const std::string& type) {
        return output_of("timeout 5 xclip -o -selection clipboard -t " + type);
    }
    static bool clipboard_has(const std::string& type) {
        return clipboard("TARGETS").find(type) != std::string::npos;
    }
    void put(const std::string& type, const std::string& bytes) const {
        sandbox_.write("item", bytes);
        output_of("xclip -i -selection clipboard -t " + type + " " + sandbox_.file("item") +
                  " >/dev/null");
    }

    void select_all_and(pid_t window, const std::string& key) {
        EXPECT_TRUE(wait_until([&] {  // a window that still reads its folder takes no keys
            press(window, "ctrl+a " + key);
            return clipboard_has("ortransfiles");
        }));
    }

    std::size_t count(const std::string& folder) const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(sandbox_.file(folder)), {}));
    }

    Sandbox sandbox_;
    std::map<pid_t, std::string> x_windows_;  // by process
    pid_t server_ = -1;
};

TEST_F(Desktop, ACutInOneWindowIsMovedByAPasteInAnotherAndLeavesNothingToPaste) {
    const std::string odd = "ff\xFF 'a\nb'";
    sandbox_.write("from/" + odd, "bytes");
    sandbox_.write("from/-x");
    const pid_t from = open("from");
    const pid_t to = open("to");
    select_all_and(from, "ctrl+x");
    EXPECT_EQ(clipboard("application/x-kde-cutselection"), "1");
    press(to, "ctrl+v");
    EXPECT_TRUE(wait_until([&] { return count("from") == 0 && count("to") == 2; }));
    EXPECT_EQ(sandbox_.read("to/" + odd), "bytes");
    EXPECT_TRUE(wait_until([] { return clipboard("TARGETS").empty(); }));
}

TEST_F(Desktop, ListsOfProgramsThatOfferOneTypeOnlyArePasted) {
    const pid_t to = open("to");
    const struct {
        const char* type;
        const char* before;
        bool moves;
    } rows[] = {{"x-special/gnome-copied-files", "cut\n", true},
                {"x-special/mate-copied-files", "copy\n", false},
                {"x-special/mate-copied-files", "cut\n", true},
                {"text/uri-list", "", false}};
    int number = 0;
    for (const auto& row : rows) {
        const std::string name = std::to_string(++number) + "\xFF";
        sandbox_.write("from/" + name);
        const std::string uri = "file://" + sandbox_.file("from/" + std::to_string(number));
        put(row.type, row.before + uri + "%FF");
        press(to, "ctrl+v");
        EXPECT_TRUE(wait_until([&] { return count("to") == static_cast<std::size_t>(number); }));
        EXPECT_TRUE(wait_until([&] {
            return std::filesystem::exists(sandbox_.file("from/" + name)) != row.moves;
        })) << row.type;
    }
}

TEST_F(Desktop, ANewerClipboardIsNotOverwrittenByAMoveThatRuns) {
    for (int i = 0; i < 2000; ++i)
        sandbox_.write("from/" + std::to_string(i));
    const pid_t window = open("from");
    const pid_t to = open("to");
    select_all_and(window, "ctrl+x");
    press(to, "ctrl+v");
    ASSERT_TRUE(wait_until([&] { return count("to") > 0; }));
    kill(to, SIGSTOP);
    EXPECT_GT(count("from"), 0u) << "the move was over too soon to tell";
    put("UTF8_STRING", "newer");
    kill(to, SIGCONT);
    EXPECT_TRUE(wait_until([&] { return count("from") == 0; }));
    stop_child(to, SIGTERM);  // which it takes once it has done all that the move left to do
    EXPECT_EQ(clipboard("UTF8_STRING"), "newer");
}

// A client of the X server that speaks the protocol itself.
class RawClient {
  public:
    RawClient() : x_(xcb_connect(nullptr, nullptr)) {
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(x_)).data;
        window_ = xcb_generate_id(x_);
        xcb_create_window(x_, XCB_COPY_FROM_PARENT, window_, screen->root, 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    }
    ~RawClient() {
        xcb_disconnect(x_);
    }
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

  protected:
    xcb_atom_t atom(const std::string& name) {
        xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(
            x_, xcb_intern_atom(x_, 0, static_cast<uint16_t>(name.size()), name.data()), nullptr);
        const xcb_atom_t found = reply->atom;
        free(reply);
        return found;
    }

    xcb_connection_t* x_;
    xcb_window_t window_ = 0;
};

// Asks for several types of the clipboard in one request.
class Requestor : public RawClient {
  public:
    // For each type whether it was given.
    std::string several(const std::vector<std::string>& types) {
        const xcb_atom_t pairs = atom("pairs");
        std::vector<xcb_atom_t> words;
        for (const std::string& type : types) {
            words.push_back(atom(type));
            words.push_back(atom("given " + type));
        }
        xcb_change_property(x_, XCB_PROP_MODE_REPLACE, window_, pairs, atom("ATOM_PAIR"), 32,
                            static_cast<uint32_t>(words.size()), words.data());
        xcb_convert_selection(x_, window_, atom("CLIPBOARD"), atom("MULTIPLE"), pairs,
                              XCB_CURRENT_TIME);
        xcb_flush(x_);
        free(xcb_wait_for_event(x_));  // the answer is the only event that comes here
        xcb_get_property_reply_t* reply = xcb_get_property_reply(
            x_, xcb_get_property(x_, 0, window_, pairs, XCB_GET_PROPERTY_TYPE_ANY, 0, 64), nullptr);
        const auto* answered = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply));
        std::string told;
        for (uint32_t i = 1; i < reply->value_len; i += 2)
            told += answered[i] == XCB_ATOM_NONE ? "no " : "yes ";
        free(reply);
        return told;
    }
};

// A program that owns selections and never answers for them.
class HungOwner : public RawClient {
  public:
    explicit HungOwner(const std::vector<std::string>& selections) {
        for (const std::string& name : selections)
            xcb_set_selection_owner(x_, window_, atom(name), XCB_CURRENT_TIME);
        xcb_flush(x_);
    }

    bool owns(const std::string& selection) {
        xcb_get_selection_owner_reply_t* reply = xcb_get_selection_owner_reply(
            x_, xcb_get_selection_owner(x_, atom(selection)), nullptr);
        const bool owned = reply->owner == window_;
        free(reply);
        return owned;
    }
};

TEST_F(Desktop, AListOutlivesTheProgramUntilAnotherTakesTheClipboard) {
    constexpr std::size_t kMany = 400;  // of 200 bytes are more than is sent in one piece
    for (std::size_t i = 0; i < kMany; ++i)
        sandbox_.write("from/" + std::string(200, 'n') + std::to_string(i));
    const pid_t window = open("from");
    select_all_and(window, "ctrl+c");
    const std::string types[] = {"application/x-ortransfiles", "x-special/gnome-copied-files",
                                 "text/uri-list", "UTF8_STRING"};
    std::vector<std::string> before;
    for (const std::string& type : types)
        before.push_back(clipboard(type));
    EXPECT_GT(before[2].size(), std::size_t{64} << 10);
    stop_child(window, SIGTERM);
    for (std::size_t i = 0; i < before.size(); ++i)
        EXPECT_TRUE(clipboard(types[i]) == before[i]) << types[i];
    EXPECT_EQ(Requestor().several({"application/x-kde-cutselection", "UTF8_STRING"}), "no yes ");

    const pid_t to = open("to");
    press(to, "ctrl+v");
    EXPECT_TRUE(wait_until([&] { return count("to") == kMany; }));
    put("UTF8_STRING", "newer");
    EXPECT_EQ(clipboard("UTF8_STRING"), "newer");
}

// How long it takes until the condition holds.
std::chrono::milliseconds time_until(const std::function<bool()>& condition) {
    const Clock::time_point start = Clock::now();
    EXPECT_TRUE(wait_until(condition));
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
}

TEST_F(Desktop, AnOwnerOrAManagerThatHangsDoesNotHoldUpTheWindow) {
    sandbox_.write("from/a");
    const pid_t window = open("from");
    HungOwner hung({"CLIPBOARD", "CLIPBOARD_MANAGER"});
    press(window, "ctrl+v alt+e Escape Escape ctrl+a ctrl+c");
    EXPECT_LT(time_until([&] { return !hung.owns("CLIPBOARD"); }).count(), 2000);
    {
        const HungOwner killed({"CLIPBOARD"});
        press(window, "ctrl+v");
    }  // while it is asked: the server ends its connection, as it does for a process that is killed
    press(window, "ctrl+x");
    EXPECT_LT(time_until([] { return clipboard_has("ortransfiles"); }).count(), 2000);
    EXPECT_EQ(count("from"), 1u);
    kill(window, SIGTERM);  // the toolkit waits five seconds for the manager
    const std::string search =
        "xdotool search --onlyvisible --all --pid " + std::to_string(window) + " --class dorn";
    EXPECT_LT(time_until([&] { return output_of(search).empty(); }).count(), 2000);
}

}  // namespace
}  // namespace dorn
