// orterm as dorn and users run it: real processes, with a terminal emulator of the test's own whose
// keyboard and screen the test holds (fake_terminal.py).
#include "support/child.h"
#include "support/sandbox.h"

#include <array>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <poll.h>
#include <sstream>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace dorn {
namespace {

using Words = std::vector<std::string>;

constexpr int kPatience = 30000;  // milliseconds

const std::string kOrterm = std::string(DORN_ADAPTORS) + "/orterm";

std::string proc_file(pid_t process, const std::string& name) {
    return read_file("/proc/" + std::to_string(process) + "/" + name);
}

Words children_of(pid_t process) {
    std::istringstream text(proc_file(process, "task/" + std::to_string(process) + "/children"));
    return {std::istream_iterator<std::string>(text), {}};
}

class Orterm : public ::testing::Test {
  protected:
    Orterm() {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        sandbox_.file("terminal").copy(address.sun_path, sizeof address.sun_path - 1);
        listener_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        EXPECT_EQ(bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(listener_, 8), 0);
        setting_.variables = {{"TERMINAL", FAKE_TERMINAL},
                              {"FAKE_TERMINAL", address.sun_path},
                              {"MARK", sandbox_.path()},
                              {"DISPLAY", ""},
                              {"WAYLAND_DISPLAY", ""}};
        setting_.directory = sandbox_.path();
        setting_.output = setting_.errors = sandbox_.file("errors");
    }
    ~Orterm() override {
        close_window();
        close(listener_);
        for (const pid_t process : marked_processes())
            kill(process, SIGKILL);
        if (process_ > 0) end_of_child(process_);
    }

    // Starts orterm with these words, in the sandbox.
    void start(Words words, const std::string& program = kOrterm) {
        words.insert(words.begin(), program);
        close_window();
        process_ = start_child(words, setting_);
    }
    void start_shell(const std::string& options, const std::string& line) {
        Words words{"/bin/sh", "-c", line};
        if (!options.empty()) words.insert(words.begin(), options);
        start(words);
    }
    int status() {
        return end_of_child(std::exchange(process_, -1));
    }

    // Whether a window opens. The functions below are about the last one that did.
    bool opens(int patience = kPatience) {
        pollfd item{listener_, POLLIN, 0};
        if (poll(&item, 1, patience) <= 0) return false;
        window_ = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        ucred peer{};
        socklen_t size = sizeof peer;
        getsockopt(window_, SOL_SOCKET, SO_PEERCRED, &peer, &size);
        emulator_ = peer.pid;
        return true;
    }
    // Whether the window, which is waited for, comes to hold the text.
    bool shows(const std::string& wanted) {
        if (window_ < 0 && !opens()) return false;
        while (text_.find(wanted) == std::string::npos)
            if (!read_window(kPatience)) return false;
        return true;
    }
    // Whether the other side closes it within that many milliseconds of rest.
    bool closes(int patience = kPatience) {
        while (read_window(patience))
            continue;
        return ended_;
    }
    void type(const std::string& keys) const {
        static_cast<void>(send(window_, keys.data(), keys.size(), MSG_NOSIGNAL));
    }
    void close_window() {
        if (window_ >= 0) close(window_);
        window_ = -1;
        text_.clear();
    }

    // The processes that were started from this test's orterm and live.
    std::vector<pid_t> marked_processes() const {
        const std::string mark = std::string("MARK=") + sandbox_.path();
        std::vector<pid_t> found;
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            const pid_t process = std::atoi(entry.path().filename().c_str());
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
    pid_t process_ = -1;
    pid_t emulator_ = -1;
    std::string text_;  // that the window has shown

  private:
    bool read_window(int patience) {
        pollfd item{window_, POLLIN, 0};
        if (poll(&item, 1, patience) <= 0) return false;
        std::array<char, 65536> bytes;
        const ssize_t count = read(window_, bytes.data(), bytes.size());
        ended_ = count <= 0;
        if (!ended_) text_.append(bytes.data(), static_cast<size_t>(count));
        return !ended_;
    }

    int listener_ = -1;
    int window_ = -1;
    bool ended_ = false;
};

TEST_F(Orterm, ASilentCommandHasNoWindowAndOneThatWasNotReadKeepsIts) {
    struct Row {
        Words words;
        int status;
        const char* shows;  // null: there is no window
        bool stays = false;
    };
    const auto sh = [](const char* line) { return Words{"-U", "sh", "-c", line}; };
    sandbox_.write("plain", "text");
    const Row rows[] = {
        {{"-zU", "true"}, 0, nullptr},
        {sh("exit 7"), 7, nullptr},
        {sh("kill -KILL $$"), 137, nullptr},
        {{"-z", "true"}, 0, "", true},
        {{"-zU", "echo", "a"}, 0, "a", true},
        {{"-U", "echo", "a"}, 0, "a", true},
        {{"sh", "-c", "echo a; exit 1"}, 1, "a"},
        {{"-U", "no such\ncommand"}, 127, "orterm: no such", true},
        {{"./plain"}, 126, "orterm: ./plain"},
        {sh("read x; test $x = typed"), 0, ""},
        {sh("read x; false"), 1, "", true},
        {sh("read x; exit 130"), 130, ""},
        {sh("stty -icanon; sleep 0.2; read x; test $x = typed"), 0, ""},
        {{"-U", "bash", "-c", "read -t 60 x; test $x = typed"}, 0, ""},
        {{"-U", "python3", "-ISc",
          "import os, select\ne = select.epoll()\ne.register(0, select.EPOLLIN)\ne.poll()\n"
          "os._exit(os.read(0, 9) != b'typed\\n')"},
         0,
         ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.words.back());
        start(row.words);
        if (row.shows != nullptr) {
            EXPECT_TRUE(shows(row.shows));
            if (row.words.back().find("read") != std::string::npos) type("typed\r");
            EXPECT_EQ(shows("press Enter to close"), row.stays);
            type("\r");
        }
        EXPECT_EQ(status(), row.status);
        EXPECT_TRUE(row.shows == nullptr ? !opens(0) : closes());
        EXPECT_TRUE(nothing_is_left());
    }
}

// Also of a program whose file was replaced meanwhile.
TEST_F(Orterm, OutputBringsTheWindow) {
    const std::string program = sandbox_.file("copy");
    std::filesystem::copy_file(kOrterm, program);
    start({"-U", "sh", "-c",
           "rm copy; while [ ! -e go ]; do sleep 0.05; done; printf '\\033[1mgr\\303\\274n\\n'"},
          program);
    EXPECT_TRUE(wait_until([&] { return !std::filesystem::exists(program); }));
    EXPECT_FALSE(opens(0));
    sandbox_.write("go");
    EXPECT_TRUE(shows("\x1b[1mgr\xc3\xbcn\r\n"));
    EXPECT_TRUE(shows("ended with status 0: press Enter to close]"));
    type("\x1b[1;1R\x1b]11;rgb:0/0/0\x1b\\");  // the terminal's own reports
    EXPECT_FALSE(closes(300));
    type("q");
    EXPECT_EQ(status(), 0);
    EXPECT_TRUE(nothing_is_left());
}

TEST_F(Orterm, TheProgramLearnsTheSizeOfTheWindow) {
    start_shell("", "trap 'stty size' WINCH; stty size; while :; do sleep 0.05; done");
    EXPECT_TRUE(shows("30 100"));
    kill(emulator_, SIGUSR1);
    EXPECT_TRUE(shows("50 132"));
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
    EXPECT_TRUE(shows("READY"));
    EXPECT_TRUE(text_ == bytes + "READY");
    type(keys);
    EXPECT_EQ(status(), 0);
    EXPECT_TRUE(sandbox_.read("typed") == keys);
}

TEST_F(Orterm, ControlCInterruptsAndAStoppedProgramGoesOn) {
    start_shell("", "trap 'echo caught' INT; echo ready; read x; read x; echo got $x");
    EXPECT_TRUE(shows("ready"));
    type("\x03");
    EXPECT_TRUE(shows("caught"));
    type("\x1a");
    type("a\rb\r");
    EXPECT_TRUE(shows("got "));
    EXPECT_EQ(status(), 0);
}

TEST_F(Orterm, AProgramThatLostTheForegroundReadsAllTheSame) {
    start({"python3", "-ISc",
           "import os, signal\n"
           "if os.fork() == 0:\n"
           "    signal.signal(signal.SIGTTOU, signal.SIG_IGN)\n"
           "    os.setpgid(0, 0)\n"
           "    os._exit(os.tcsetpgrp(0, os.getpid()) or 0)\n"
           "os.wait()\n"
           "os.write(1, b'ready')\n"
           "os._exit(os.read(0, 9) != b'a\\n')"});
    EXPECT_TRUE(shows("ready"));
    type("a\r");
    EXPECT_TRUE(closes());
    EXPECT_EQ(status(), 0);
}

// Where the command lives on it is told by a hang-up, as by any terminal that goes.
TEST_F(Orterm, NothingIsLeftWhenTheWindowIsClosedOrAnyPartyIsKilled) {
    const std::pair<const char*, int> rows[] = {
        {"window", 128 + SIGHUP},           {"emulator", 128 + SIGHUP},
        {"attached process", 128 + SIGHUP}, {"first process", 1000 + SIGKILL},
        {"session leader", 128 + SIGKILL},  {"command", 128 + SIGKILL}};
    for (const auto& [party, expected] : rows) {
        unlink(sandbox_.file("heard").c_str());
        start_shell("",
                    "trap 'echo hup >heard; exit 5' HUP; echo $$ >command; echo up; "
                    "while :; do sleep 0.05; done");
        ASSERT_TRUE(shows("up")) << party;
        const pid_t command = std::stoi(sandbox_.read("command"));
        const std::string parent = proc_file(command, "stat");
        const std::map<std::string, pid_t> parties = {
            {"emulator", emulator_},
            {"attached process", std::stoi(children_of(emulator_).at(0))},
            {"first process", process_},
            {"session leader", std::stoi(parent.substr(parent.rfind(')') + 4))},
            {"command", command}};
        if (parties.contains(party))
            kill(parties.at(party), SIGKILL);
        else
            close_window();
        EXPECT_EQ(status(), expected) << party;
        EXPECT_TRUE(expected != 128 + SIGHUP || wait_for_file("heard")) << party;
        EXPECT_TRUE(nothing_is_left()) << party;
    }
}

TEST_F(Orterm, AnEmulatorThatHandsOverToAServerIsWaitedForAndLeavesNoZombie) {
    setting_.variables["FAKE_TERMINAL_SERVER"] = "yes";
    start_shell("", "echo up; read x; exit 6");
    EXPECT_TRUE(shows("up"));
    // Of the processes that the first one started only the session's leader is left.
    EXPECT_TRUE(wait_until([&] { return children_of(process_).size() == 1; }));
    type("\r");
    EXPECT_EQ(status(), 6);
    EXPECT_TRUE(nothing_is_left());
}

TEST_F(Orterm, OnlyOneProcessIsAttached) {
    start_shell("", "echo up; read x");
    ASSERT_TRUE(shows("up"));
    std::string address = proc_file(emulator_, "cmdline");
    address = address.substr(address.find("orterm-")).c_str();
    EXPECT_EQ(end_of_child(start_child({kOrterm, "--attach", address}, setting_)), 1);
    EXPECT_NE(sandbox_.read("errors").find("nothing to attach to"), std::string::npos);
    type("\r");
    EXPECT_EQ(status(), 0);
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
    EXPECT_TRUE(shows("press Enter"));
    // 3 is the folder that ls reads.
    for (const char* wanted :
         {"0 1 2 3 TERM xterm-256color", "SigBlk:\t0000000000000000", "SigIgn:\t0000000000000000"})
        EXPECT_NE(text_.find(wanted), std::string::npos) << text_;
    type("\r");
    EXPECT_EQ(status(), 0);
}

TEST_F(Orterm, WhatTheCommandLeavesRunningLivesOn) {
    start_shell("-U",
                "sh -c 'echo up >up; while [ ! -e go ]; do sleep 0.05; done; echo x >after' &"
                " while [ ! -s up ]; do sleep 0.05; done");
    EXPECT_EQ(status(), 0);
    sandbox_.write("go");
    EXPECT_TRUE(wait_for_file("after"));
}

TEST_F(Orterm, WithoutAWindowTheTerminalThatItWasStartedFromServes) {
    setting_.variables["TERMINAL"] = "";
    start({"-e", "/bin/sh", "-c",
           kOrterm + " -zU sh -c 'echo said; read x; stty size; exit $x'; echo status $?; "
                     "stty -a; echo over"},
          FAKE_TERMINAL);
    EXPECT_TRUE(shows("said"));
    type("5\r");
    EXPECT_TRUE(shows("over"));
    for (const char* wanted : {"going on here", "30 100\r\nstatus 5\r\n", " icanon"})
        EXPECT_NE(text_.find(wanted), std::string::npos) << text_;
}

TEST_F(Orterm, WithoutAWindowTheOutputGoesToStandardError) {
    for (const char* terminal : {"", "/bin/false", "no-such-terminal -x", kOrterm.c_str()}) {
        setting_.variables["TERMINAL"] = terminal;
        start_shell("-U", "echo said; exit 3");
        EXPECT_EQ(status(), 3) << terminal;
        const std::string errors = sandbox_.read("errors");
        EXPECT_NE(errors.find("no terminal window for echo said"), std::string::npos) << terminal;
        EXPECT_NE(errors.find("said\r\n"), std::string::npos) << terminal;
    }
    start_shell("-U", "echo said; read x");
    EXPECT_EQ(status(), 128 + SIGHUP);
    EXPECT_NE(sandbox_.read("errors").find("wants input"), std::string::npos);
    EXPECT_TRUE(nothing_is_left());
}

// Each of these notes its arguments and fails, so that the next one is tried.
TEST_F(Orterm, EmulatorsAreTriedInOrderEachInItsOwnForm) {
    const std::string title = "echo 'gr\xc3\xbcn'?#?", attach = kOrterm + "|--attach|orterm-";
    const std::pair<std::string, std::string> calls[] = {
        {"mine", "-a|b|-e|" + attach},
        {"x-terminal-emulator", "-T|" + title + "|-e|" + attach},
        {"gnome-terminal", "--title=" + title + "|--|" + attach},
        {"lxterminal", "--title=" + title + "|-e|'" + kOrterm + "' '--attach' 'orterm-"},
        {"kitty", "--title|" + title + "|" + attach}};
    sandbox_.mkdir("bin");
    for (const auto& [name, arguments] : calls)
        sandbox_.script("bin/" + name,
                        "{ printf '%s' \"${0##*/}\"; printf '|%s' \"$@\"; echo; } >>log\nexit 1");
    setting_.variables["PATH"] = sandbox_.file("bin") + ":/bin:/usr/bin";
    setting_.variables["TERMINAL"] = "mine -a b";
    setting_.variables["DISPLAY"] = ":no-such-display";
    start({"/bin/sh", "-c", "echo 'gr\xc3\xbcn'\n#\xc2\x9b"});
    EXPECT_EQ(status(), 0);
    std::istringstream log(sandbox_.read("log"));
    for (const auto& [name, arguments] : calls) {
        std::string line;
        // Emulators that are installed here may stand between them.
        while (std::getline(log, line) && !line.starts_with(name + "|"))
            continue;
        EXPECT_EQ(line.substr(0, line.find("orterm-") + 7), name + "|" + arguments);
    }
}

TEST_F(Orterm, WithoutACommandTheTerminalOpensInTheCurrentDirectory) {
    sandbox_.script("my term", "pwd >where; echo $# >>where; exit 9");
    setting_.variables["TERMINAL"] = sandbox_.file("my term");
    start({});
    EXPECT_EQ(status(), 9);
    EXPECT_EQ(sandbox_.read("where"), std::string(sandbox_.path()) + "\n0\n");
}

}  // namespace
}  // namespace dorn
