// Whole processes: start-up, what is kept per user, and the ways in which the program ends.
#include "app/init.h"
#include "config/config.h"
#include "dirmodel/name_translation.h"
#include "support/sandbox.h"

#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <signal.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace dorn {
namespace {

constexpr const char* kFlagsByte = "\xff";

std::string read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

// What the program said, without what the toolkit says of the platform.
std::string own_lines(const std::string& errors) {
    std::istringstream lines(errors);
    std::string own;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("DORN") || line.starts_with("dorn")) own += line + "\n";
    }
    return own;
}

// A dorn of this build, run offscreen.
class Process {
  public:
    Process(const std::vector<std::string>& arguments,
            const std::map<std::string, std::string>& environment, const std::string& errors) {
        pid_ = fork();
        if (pid_ != 0) return;
        if (FILE* redirected = freopen(errors.c_str(), "w", stderr); redirected == nullptr)
            _exit(99);
        for (const auto& [name, value] : environment) {
            if (value.empty())
                unsetenv(name.c_str());
            else
                setenv(name.c_str(), value.c_str(), 1);
        }
        std::vector<char*> argv = {const_cast<char*>(DORN_PROGRAM)};
        for (const std::string& argument : arguments)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        execv(DORN_PROGRAM, argv.data());
        _exit(98);
    }
    ~Process() {
        if (pid_ > 0 && !waited_) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t pid() const {
        return pid_;
    }
    // The directory that the process works in, which is the one it shows.
    std::string shown() const {
        char target[4096] = {};
        const std::string link = "/proc/" + std::to_string(pid_) + "/cwd";
        return readlink(link.c_str(), target, sizeof target - 1) < 0 ? "" : target;
    }
    // Its event loop runs once it catches SIGTERM and sleeps in poll.
    bool wait_until_shown(const std::string& path) const {
        return wait_for([&] { return shown() == path && is_idle(); });
    }
    int wait_status() {
        int status = -1;
        if (!wait_for([&] { return waitpid(pid_, &status, WNOHANG) == pid_; })) return -1;
        waited_ = true;
        return status;
    }

  private:
    template <class Condition>
    static bool wait_for(Condition condition) {
        for (int i = 0; i < 3000; ++i) {
            if (condition()) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return false;
    }
    bool is_idle() const {
        const std::string status = read_file("/proc/" + std::to_string(pid_) + "/status");
        const std::size_t caught = status.find("SigCgt:");
        if (caught == std::string::npos) return false;
        const unsigned long mask = std::stoul(status.substr(caught + 7), nullptr, 16);
        return (mask & (1ul << (SIGTERM - 1))) != 0 &&
               status.find("State:\tS") != std::string::npos;
    }

    pid_t pid_ = -1;
    bool waited_ = false;
};

class Start : public ::testing::Test {
  protected:
    void SetUp() override {
        sandbox_.mkdir("home");
        sandbox_.mkdir("home/.or");
        sandbox_.mkdir("shown");
        home_ = sandbox_.file("home");
        shown_ = sandbox_.file("shown");
        kept_ = home_ + "/.or/dorn";
        environment_ = {{"HOME", home_}, {"QT_QPA_PLATFORM", "offscreen"}};
    }
    int run_and_end(int signal, const std::vector<std::string>& arguments,
                    const std::string& shows) {
        Process dorn(arguments, environment_, sandbox_.file("errors"));
        EXPECT_TRUE(dorn.wait_until_shown(shows)) << dorn.shown();
        kill(dorn.pid(), signal);
        const int status = dorn.wait_status();
        errors_ = own_lines(read_file(sandbox_.file("errors")));
        return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + status;
    }

    Sandbox sandbox_;
    std::string home_, shown_, kept_, errors_;
    std::map<std::string, std::string> environment_;
};

TEST_F(Start, EverySignalThatEndsTheProgramSaves) {
    for (const int signal : {SIGTERM, SIGHUP, SIGINT, SIGQUIT}) {
        unlink((kept_ + "/config.003").c_str());
        EXPECT_EQ(run_and_end(signal, {shown_}, shown_), 0) << strsignal(signal);
        const std::string config = read_file(kept_ + "/config.003");
        ASSERT_EQ(config.size(), 5692u) << strsignal(signal);
        EXPECT_EQ(config.substr(4659, 1), kFlagsByte);
        EXPECT_EQ(read_file(kept_ + "/hotlist.001"), "/\n");
        EXPECT_EQ(read_file(kept_ + "/fspec.001"), "*\n");
        EXPECT_EQ(errors_, "");
    }
    struct stat status {};
    ASSERT_EQ(stat(kept_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777u, 0700u);
}

TEST_F(Start, StateThatComesFromOneRunIsThereInTheNext) {
    ASSERT_EQ(run_and_end(SIGTERM, {shown_}, shown_), 0);
    std::string config = read_file(kept_ + "/config.003");
    Config record;
    std::memcpy(&record, config.data(), sizeof record);
    EXPECT_EQ(record.win_width, 600);
    EXPECT_EQ(record.win_height, 410);
    EXPECT_EQ(record.hotlist_width, 190);
    EXPECT_EQ(record.column_width[2], 105);
    EXPECT_EQ(record.flags, 0xFF000925u);
    record.win_width = 700;
    record.column_width[0] = 222;
    record.hotlist_width = 150;
    record.show_hotlist = 0;
    config.assign(reinterpret_cast<const char*>(&record), sizeof record);
    std::ofstream(kept_ + "/config.003", std::ios::binary) << config;
    std::ofstream(kept_ + "/hotlist.001") << shown_ << "\n/usr\n";
    ASSERT_EQ(run_and_end(SIGTERM, {shown_}, shown_), 0);
    EXPECT_EQ(read_file(kept_ + "/config.003"), config) << "byte for byte";
    EXPECT_EQ(read_file(kept_ + "/hotlist.001"), shown_ + "\n/usr\n");
}

TEST_F(Start, DamagedConfigurationStartsAllTheSame) {
    const std::string damaged[] = {std::string(100, '\xff'), std::string(5692, '\xff'),
                                   std::string(5692, '\x80'), std::string(7000, 'x')};
    mkdir(kept_.c_str(), 0700);
    for (const std::string& content : damaged) {
        std::ofstream(kept_ + "/config.003", std::ios::binary) << content;
        std::ofstream(kept_ + "/hotlist.001", std::ios::binary)
            << std::string(3000, '\xfe') << '\0';
        EXPECT_EQ(run_and_end(SIGTERM, {shown_}, shown_), 0);
    }
}

TEST_F(Start, WithoutAUsableConfigurationDirectoryItSaysSoAndSavesNothing) {
    rmdir((home_ + "/.or").c_str());
    EXPECT_EQ(run_and_end(SIGTERM, {shown_}, shown_), 0);
    EXPECT_EQ(errors_, "DORN error: unable to create config directory " + kept_ + "\n");
    sandbox_.mkdir("home/.or");
    sandbox_.write("home/.or/dorn", "a file");
    EXPECT_EQ(run_and_end(SIGTERM, {shown_}, shown_), 0);
    EXPECT_EQ(errors_, "DORN error: unable to access config directory " + kept_ + "\n");
    EXPECT_EQ(read_file(kept_), "a file");
    environment_["HOME"] = "";
    EXPECT_EQ(run_and_end(SIGTERM, {shown_}, shown_), 0);
    EXPECT_EQ(errors_, "DORN error: unable to create config directory /.or/dorn\n");
}

TEST_F(Start, StartDirectoryIsTheFirstArgumentThatIsNoOption) {
    const std::string here = shown_;
    struct Case {
        std::vector<std::string> arguments;
        std::string shows;
    };
    ASSERT_EQ(chdir(here.c_str()), 0);
    sandbox_.mkdir("shown/sub");
    const Case cases[] = {
        {{"-x10", home_}, home_},     {{"-x", "10", home_}, here}, {{"sub"}, here + "/sub"},
        {{home_ + "/missing"}, here}, {{"-h200", "-w300"}, here},  {{home_, "-w300"}, home_},
    };
    for (const Case& one : cases)
        EXPECT_EQ(run_and_end(SIGTERM, one.arguments, one.shows), 0) << one.arguments[0];
    ASSERT_EQ(chdir("/"), 0);
}

TEST_F(Start, NamesAreTriedAsUtf8AlsoWithoutAnAlternateSet) {
    Config record{};
    config_set_defaults(record);
    record.flags = kFormatMark | kEncodingTryUtf8;
    mkdir(kept_.c_str(), 0700);
    ASSERT_EQ(init_save_config(&record, kept_.c_str(), "config.003"), 0);
    setenv("HOME", home_.c_str(), 1);
    char program[] = "dorn";
    char* argv[] = {program, nullptr};
    init(1, argv);
    const char* name = "abc\xFF";
    EXPECT_EQ(fname_decode(name, nullptr), name);
    fname_set_translation(0, "");
    EXPECT_STREQ(fname_decode(name, nullptr), "?abc?");
}

TEST_F(Start, ConfigurationDirectoryDoesNotFollowTheWorkingOne) {
    ASSERT_EQ(chdir(sandbox_.path()), 0);
    EXPECT_EQ(init_config_directory("home"), kept_);
    ASSERT_EQ(chdir("/"), 0);
}

TEST_F(Start, WindowChangeSignalsRereadAndNeverEndIt) {
    Process dorn({shown_}, environment_, sandbox_.file("errors"));
    ASSERT_TRUE(dorn.wait_until_shown(shown_));
    EXPECT_EQ(read_file("/proc/" + std::to_string(dorn.pid()) + "/comm"), "dorn\n")
        << "the name that the broadcast after a file operation goes to";
    for (int i = 0; i < 200; ++i)
        kill(dorn.pid(), SIGWINCH);
    kill(dorn.pid(), SIGCHLD);
    kill(dorn.pid(), SIGPIPE);
    kill(dorn.pid(), SIGALRM);
    ASSERT_TRUE(dorn.wait_until_shown(shown_));
    kill(dorn.pid(), SIGTERM);
    EXPECT_EQ(dorn.wait_status(), 0);
}

}  // namespace
}  // namespace dorn
