// orterm as dorn and users run it: real processes, with a terminal emulator of the test's own whose
// keyboard and screen the test holds (fake_terminal.cpp).
#include "support/child.h"
#include "support/sandbox.h"

#include <array>
#include <csignal>
#include <dirent.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <poll.h>
#include <sstream>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace dorn {
namespace {

using Words = std::vector<std::string>;

const std::string kOrterm = std::string(DORN_ADAPTORS) + "/orterm";

std::string proc_file(pid_t process, const std::string& name) {
    return read_file("/proc/" + std::to_string(process) + "/" + name);
}

std::vector<pid_t> children_of(pid_t process) {
    std::istringstream text(proc_file(process, "task/" + std::to_string(process) + "/children"));
    std::vector<pid_t> children;
    for (pid_t child = 0; text >> child;)
        children.push_back(child);
    return children;
}

// What the test sees and does in one fake terminal.
class Screen {
  public:
    explicit Screen(int connection) : connection_(connection) {
        ucred peer{};
        socklen_t size = sizeof peer;
        getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size);
        emulator = peer.pid;
    }
    ~Screen() {
        close_window();
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    // Reads until the screen holds the text; false when the window closes or nothing comes.
    bool shows(const std::string& wanted) {
        while (text.find(wanted) == std::string::npos)
            if (!read_more()) return false;
        return true;
    }
    // Reads until the window is closed by the other side.
    bool closes() {
        while (read_more())
            continue;
        return ended_;
    }
    void type(const std::string& keys) const {
        for (size_t sent = 0; sent < keys.size();) {
            const ssize_t count =
                send(connection_, keys.data() + sent, keys.size() - sent, MSG_NOSIGNAL);
            if (count <= 0) return;
            sent += static_cast<size_t>(count);
        }
    }
    void close_window() {
        if (connection_ >= 0) close(connection_);
        connection_ = -1;
    }

    std::string text;
    pid_t emulator = -1;

  private:
    bool read_more() {
        pollfd item{connection_, POLLIN, 0};
        if (poll(&item, 1, 30000) <= 0) return false;
        std::array<char, 65536> bytes;
        const ssize_t count = read(connection_, bytes.data(), bytes.size());
        ended_ = count <= 0;
        if (ended_) return false;
        text.append(bytes.data(), static_cast<size_t>(count));
        return true;
    }

    int connection_;
    bool ended_ = false;
};

class Orterm : public ::testing::Test {
  protected:
    void SetUp() override {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        sandbox_.file("terminal").copy(address.sun_path, sizeof address.sun_path - 1);
        listener_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        ASSERT_EQ(bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        ASSERT_EQ(listen(listener_, 8), 0);
        setting_.variables = {{"TERMINAL", FAKE_TERMINAL_PROGRAM},
                              {"FAKE_TERMINAL", address.sun_path},
                              {"MARK", sandbox_.path()},
                              {"DISPLAY", ""},
                              {"WAYLAND_DISPLAY", ""}};
        setting_.directory = sandbox_.path();
        setting_.output = setting_.errors = sandbox_.file("errors");
    }
    void TearDown() override {
        close(listener_);
        for (const pid_t process : marked_processes())
            kill(process, SIGKILL);
        if (process_ > 0) end_of_child(process_);
    }

    // Starts orterm with these words, in the sandbox.
    void start(Words words) {
        words.insert(words.begin(), kOrterm);
        process_ = start_child(words, setting_);
    }
    void start_shell(const std::string& options, const std::string& line) {
        Words words{"/bin/sh", "-c", line};
        if (!options.empty()) words.insert(words.begin(), options);
        start(words);
    }
    int status() {
        const int status = end_of_child(process_);
        process_ = -1;
        return status;
    }

    // The next window that opens; null when none does.
    std::unique_ptr<Screen> window(int timeout = 30000) const {
        pollfd item{listener_, POLLIN, 0};
        if (poll(&item, 1, timeout) <= 0) return nullptr;
        return std::make_unique<Screen>(accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC));
    }

    // The processes that were started from this test's orterm and live.
    std::vector<pid_t> marked_processes() const {
        const std::string mark = std::string("MARK=") + sandbox_.path();
        std::vector<pid_t> found;
        const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir("/proc"), closedir);
        while (const dirent* entry = readdir(folder.get())) {
            const auto process = static_cast<pid_t>(std::atoi(entry->d_name));
            if (process > 0 && proc_file(process, "environ").find(mark) != std::string::npos)
                found.push_back(process);
        }
        return found;
    }
    bool nothing_is_left() const {
        return wait_until([&] { return marked_processes().empty(); });
    }
    bool wait_for_file(const std::string& name) const {
        return wait_until([&] { return !sandbox_.read(name).empty(); });
    }

    Sandbox sandbox_;
    ChildSetting setting_;
    int listener_ = -1;
    pid_t process_ = -1;
};

TEST_F(Orterm, PassesTheExitStatusOnAndShowsNoWindowForASilentCommand) {
    const std::pair<const char*, int> kRows[] = {
        {"exit 0", 0}, {"exit 7", 7}, {"kill -TERM $$", 143}, {"kill -KILL $$", 137}};
    for (const auto& [line, expected] : kRows) {
        start_shell("-zU", line);
        EXPECT_EQ(status(), expected) << line;
        EXPECT_TRUE(!window(0)) << line;
        EXPECT_TRUE(nothing_is_left()) << line;
    }
}

TEST_F(Orterm, ACommandThatCannotBeRunIsTold) {
    sandbox_.write("plain", "text");
    const std::pair<Words, int> kRows[] = {{{"-U", "no such\ncommand"}, 127}, {{"./plain"}, 126}};
    for (const auto& [words, expected] : kRows) {
        start(words);
        const auto screen = window();
        ASSERT_TRUE(screen);
        EXPECT_TRUE(screen->shows(std::string("orterm: ") + words.back().substr(0, 7)));
        EXPECT_EQ(screen->shows("press Enter"), words[0] == "-U");
        screen->type("\r");
        EXPECT_EQ(status(), expected);
    }
}

TEST_F(Orterm, OutputBringsTheWindow) {
    start_shell("-U", "while [ ! -e go ]; do sleep 0.05; done; printf '\\033[1mgr\\303\\274n\\n'");
    ASSERT_TRUE(wait_until([&] { return marked_processes().size() >= 3; }));
    EXPECT_TRUE(!window(0));
    sandbox_.write("go");
    const auto screen = window();
    ASSERT_TRUE(screen);
    EXPECT_TRUE(screen->shows("\x1b[1mgr\xc3\xbcn\r\n"));
    EXPECT_TRUE(screen->shows("ended with status 0: press Enter to close]"));
    screen->type("\x1b[1;1R\x1b]11;rgb:0/0/0\x1b\\q");  // the terminal's own reports, and a key
    EXPECT_EQ(status(), 0);
    EXPECT_TRUE(nothing_is_left());
}

TEST_F(Orterm, TheWindowComesAlsoWhenTheProgramsFileIsGone) {
    const std::string program = sandbox_.file("copy");
    std::filesystem::copy_file(kOrterm, program);
    process_ = start_child({program, "-U", "sh", "-c", "rm copy; echo up; read x"}, setting_);
    const auto screen = window();
    ASSERT_TRUE(screen && screen->shows("up"));
    screen->type("\r");
    EXPECT_EQ(status(), 0);
}

TEST_F(Orterm, InputBringsTheWindowAndItStaysForWhatWasNotRead) {
    struct Row {
        Words words;
        bool stays;
        int status;
    };
    const auto sh = [](const char* line) { return Words{"-U", "sh", "-c", line}; };
    const Row kRows[] = {
        {{"-z", "true"}, true, 0},
        {{"-zU", "echo", "a"}, true, 0},
        {{"-U", "echo", "a"}, true, 0},
        {{"sh", "-c", "echo a; exit 1"}, false, 1},
        {sh("read x; test $x = typed"), false, 0},
        {sh("read x; false"), true, 1},
        {sh("read x; exit 130"), false, 130},
        {sh("stty -icanon; sleep 0.2; read x; test $x = typed"), false, 0},
        {{"-U", "bash", "-c", "read -t 60 x; test $x = typed"}, false, 0},
    };
    for (const Row& row : kRows) {
        const std::string& line = row.words.back();
        start(row.words);
        const auto screen = window();
        ASSERT_TRUE(screen) << line;
        if (line.find("read") != std::string::npos) screen->type("typed\r");
        EXPECT_EQ(screen->shows("press Enter to close"), row.stays) << line;
        screen->type("\r");
        EXPECT_EQ(status(), row.status) << line;
        EXPECT_TRUE(screen->closes()) << line;
    }
}

TEST_F(Orterm, TheProgramLearnsTheSizeOfTheWindow) {
    start_shell("", "trap 'stty size' WINCH; stty size; while :; do sleep 0.05; done");
    const auto screen = window();
    ASSERT_TRUE(screen && screen->shows("30 100"));
    kill(screen->emulator, SIGUSR1);
    EXPECT_TRUE(screen->shows("50 132"));
}

// A megabyte does not fit what is kept until the window is there: the program is held up meanwhile.
TEST_F(Orterm, BytesPassUnharmedInBothDirections) {
    std::string bytes(1 << 20, '\0');
    unsigned state = 1;
    for (char& byte : bytes)
        byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
    sandbox_.write("big", bytes);
    const std::string keys = bytes.substr(0, 100000);
    start_shell("-U", "stty raw -echo; cat big; printf READY; head -c 100000 >typed");
    const auto screen = window();
    ASSERT_TRUE(screen);
    ASSERT_TRUE(wait_until([&] { return screen->shows("READY"); }));
    EXPECT_TRUE(screen->text == bytes + "READY");
    screen->type(keys);
    EXPECT_EQ(status(), 0);
    EXPECT_TRUE(sandbox_.read("typed") == keys);
}

TEST_F(Orterm, ControlCInterruptsAndAStoppedProgramGoesOn) {
    start_shell("", "trap 'echo caught' INT; echo ready; read x; read x; echo got $x");
    const auto screen = window();
    ASSERT_TRUE(screen && screen->shows("ready"));
    screen->type("\x03");
    EXPECT_TRUE(screen->shows("caught"));
    screen->type("\x1a");
    screen->type("a\rb\r");
    EXPECT_TRUE(screen->shows("got "));
    EXPECT_EQ(status(), 0);
}

// Where the command lives on it is told by a hang-up, as by any terminal that goes.
TEST_F(Orterm, NothingIsLeftWhenTheWindowIsClosedOrAnyPartyIsKilled) {
    const std::pair<const char*, int> kRows[] = {
        {"window", 128 + SIGHUP},           {"emulator", 128 + SIGHUP},
        {"attached process", 128 + SIGHUP}, {"first process", 1000 + SIGKILL},
        {"session leader", 128 + SIGKILL},  {"command", 128 + SIGKILL}};
    for (const auto& [party, expected] : kRows) {
        unlink(sandbox_.file("heard").c_str());
        start_shell("",
                    "trap 'echo hup >heard; exit 5' HUP; echo $$ >command; echo up; "
                    "while :; do sleep 0.05; done");
        const auto screen = window();
        ASSERT_TRUE(screen && screen->shows("up")) << party;
        const pid_t command = std::stoi(sandbox_.read("command"));
        const std::string leader = proc_file(command, "stat");
        const std::map<std::string, pid_t> parties = {
            {"emulator", screen->emulator},
            {"attached process", children_of(screen->emulator).at(0)},
            {"first process", process_},
            {"session leader", std::stoi(leader.substr(leader.rfind(')') + 4))},
            {"command", command}};
        if (parties.contains(party))
            kill(parties.at(party), SIGKILL);
        else
            screen->close_window();
        EXPECT_EQ(status(), expected) << party;
        EXPECT_TRUE(expected != 128 + SIGHUP || wait_for_file("heard")) << party;
        EXPECT_TRUE(nothing_is_left()) << party;
    }
}

TEST_F(Orterm, AnEmulatorThatHandsOverToAServerIsWaitedForAndLeavesNoZombie) {
    setting_.variables["FAKE_TERMINAL_SERVER"] = "yes";
    start_shell("", "echo up; read x; exit 6");
    const auto screen = window();
    ASSERT_TRUE(screen && screen->shows("up"));
    // Of the processes that the first one started only the session's leader is left.
    EXPECT_TRUE(wait_until([&] { return children_of(process_).size() == 1; }));
    screen->type("\r");
    EXPECT_EQ(status(), 6);
    EXPECT_TRUE(nothing_is_left());
}

TEST_F(Orterm, OnlyOneProcessIsAttached) {
    start_shell("", "echo up; read x");
    const auto screen = window();
    ASSERT_TRUE(screen && screen->shows("up"));
    std::string address = proc_file(screen->emulator, "cmdline");
    address = address.substr(address.find("orterm-")).c_str();
    const auto sockets = [] { return read_file("/proc/net/unix"); };
    EXPECT_TRUE(wait_until([&] {
        const std::string open = sockets();
        return open.find(address + "\n") == open.rfind(address + "\n");
    }));
    const std::string again = kOrterm + " --attach " + address + " 2>/dev/null";
    EXPECT_EQ(WEXITSTATUS(std::system(again.c_str())), 1);
    screen->type("\r");
    EXPECT_EQ(status(), 0);
    // The window's end of the connection goes a moment after the command's.
    EXPECT_TRUE(wait_until([&] { return sockets().find(address) == std::string::npos; }));
}

TEST_F(Orterm, TheCommandInheritsNeitherDescriptorsNorSignals) {
    setting_.before = [] {
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_SETMASK, &all, nullptr);
        for (const int number : {SIGCHLD, SIGPIPE, SIGHUP, SIGINT})
            std::signal(number, SIG_IGN);
        dup2(2, 77);
    };
    start_shell("-z",
                "ls /proc/self/fd | tr '\\n' ' '; echo TERM $TERM; "
                "exec grep -E 'Sig(Blk|Ign)' /proc/self/status");
    const auto screen = window();
    ASSERT_TRUE(screen && screen->shows("press Enter"));
    // 3 is the folder that ls reads.
    EXPECT_NE(screen->text.find("0 1 2 3 TERM xterm-256color"), std::string::npos) << screen->text;
    EXPECT_NE(screen->text.find("SigBlk:\t0000000000000000"), std::string::npos) << screen->text;
    EXPECT_NE(screen->text.find("SigIgn:\t0000000000000000"), std::string::npos) << screen->text;
    screen->type("\r");
    EXPECT_EQ(status(), 0);
}

TEST_F(Orterm, WhatTheCommandLeavesRunningLivesOn) {
    start_shell("-U",
                "sh -c 'echo up >up; while [ ! -e go ]; do sleep 0.05; done; echo x >after' &"
                " while [ ! -s up ]; do sleep 0.05; done");
    EXPECT_EQ(status(), 0);
    sandbox_.write("go");
    EXPECT_TRUE(wait_for_file("after"));
    EXPECT_TRUE(nothing_is_left());
}

TEST_F(Orterm, WithoutAWindowTheTerminalThatItWasStartedFromServes) {
    setting_.variables["TERMINAL"] = "";
    process_ = start_child(
        {FAKE_TERMINAL_PROGRAM, "-e", "/bin/sh", "-c",
         kOrterm + " -zU sh -c 'echo said; read x; stty size; exit $x'; echo status $?; "
                   "stty -a; echo over"},
        setting_);
    const auto screen = window();
    ASSERT_TRUE(screen && screen->shows("said"));
    screen->type("5\r");
    EXPECT_TRUE(screen->shows("over"));
    EXPECT_NE(screen->text.find("going on here"), std::string::npos) << screen->text;
    EXPECT_NE(screen->text.find("30 100\r\nstatus 5\r\n"), std::string::npos) << screen->text;
    EXPECT_NE(screen->text.find(" icanon"), std::string::npos) << screen->text;
}

TEST_F(Orterm, WithoutAWindowTheOutputGoesToStandardError) {
    for (const char* terminal : {"", "/bin/false", "no-such-terminal -x", kOrterm.c_str()}) {
        setting_.variables["TERMINAL"] = terminal;
        start_shell("-U", "echo said; exit 3");
        EXPECT_EQ(status(), 3) << terminal;
        EXPECT_NE(sandbox_.read("errors").find("no terminal window for echo said"),
                  std::string::npos);
        EXPECT_NE(sandbox_.read("errors").find("said\r\n"), std::string::npos) << terminal;
    }
    start_shell("-U", "echo said; read x");
    EXPECT_EQ(status(), 128 + SIGHUP);
    EXPECT_NE(sandbox_.read("errors").find("wants input"), std::string::npos);
    EXPECT_TRUE(nothing_is_left());
}

// Each of these notes its arguments and fails, so that the next one is tried.
TEST_F(Orterm, EmulatorsAreTriedInOrderEachInItsOwnForm) {
    sandbox_.mkdir("bin");
    setting_.variables["HERE"] = sandbox_.path();
    for (const std::string name : {"x-terminal-emulator", "xterm", "gnome-terminal",
                                   "xfce4-terminal", "lxterminal", "kitty", "mine"})
        sandbox_.script("bin/" + name,
                        "{ printf '%s' \"${0##*/}\"; printf '|%s' \"$@\"; echo; } >>\"$HERE/log\"\n"
                        "exit 1");
    setting_.variables["PATH"] = sandbox_.file("bin") + ":/bin:/usr/bin";
    setting_.variables["TERMINAL"] = "mine -a b";
    setting_.variables["DISPLAY"] = ":no-such-display";
    start({"/bin/sh", "-c", "echo 'gr\xc3\xbcn'\n"});
    EXPECT_EQ(status(), 0);
    std::istringstream log(sandbox_.read("log"));
    const std::string kTitle = "echo 'gr\xc3\xbcn'?";
    const std::string kAttach = kOrterm + "|--attach|orterm-";
    for (const std::string& start_of_line :
         Words{"mine|-a|b|-e|" + kAttach, "x-terminal-emulator|-T|" + kTitle + "|-e|" + kAttach,
               "xterm|-T|" + kTitle + "|-e|" + kAttach,
               "gnome-terminal|--title=" + kTitle + "|--|" + kAttach,
               "xfce4-terminal|--title=" + kTitle + "|-x|" + kAttach,
               "lxterminal|--title=" + kTitle + "|-e|'" + kOrterm + "' '--attach' 'orterm-",
               "kitty|--title|" + kTitle + "|" + kAttach}) {
        std::string line;
        // Emulators that are installed here may stand between them.
        while (std::getline(log, line) && !line.starts_with(start_of_line))
            continue;
        EXPECT_TRUE(line.starts_with(start_of_line)) << line;
    }
}

TEST_F(Orterm, WithoutACommandTheTerminalOpensInTheCurrentDirectory) {
    sandbox_.script("my term", "pwd >where; echo $# >>where; exit 9");
    setting_.variables["TERMINAL"] = sandbox_.file("my term");
    start({});
    EXPECT_EQ(status(), 9);
    EXPECT_EQ(sandbox_.read("where"), std::string(sandbox_.path()) + "\n0\n");
    setting_.variables["TERMINAL"] = "";
    start({"-U"});
    EXPECT_EQ(status(), 127);
    EXPECT_NE(sandbox_.read("errors").find("no terminal emulator"), std::string::npos);
}

}  // namespace
}  // namespace dorn
