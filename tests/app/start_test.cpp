// Whole processes: start-up, what is kept per user, and the ways in which the program ends.
#include "app/init.h"
#include "config/config.h"
#include "support/child.h"
#include "support/sandbox.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <signal.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace dorn {
namespace {

constexpr const char* kFlagsByte = "\xff";

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
    Process(std::vector<std::string> arguments, const ChildSetting& setting) {
        arguments.insert(arguments.begin(), DORN_PROGRAM);
        pid_ = start_child(arguments, setting);
    }
    ~Process() {
        if (pid_ < 0) return;
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // Waits until it shows that directory, which it works in, and its event loop runs.
    bool shows(const std::string& path) const {
        return wait_until([&] {
            std::error_code error;
            return std::filesystem::read_symlink(proc() + "cwd", error) == path && is_idle();
        });
    }
    void send(int signal) const {
        kill(pid_, signal);
    }
    int end(int signal) {
        kill(pid_, signal);
        const int status = end_of_child(pid_);
        if (status >= 0) pid_ = -1;
        return status;
    }
    std::string proc() const {
        return "/proc/" + std::to_string(pid_) + "/";
    }

  private:
    // It catches SIGTERM and sleeps in poll.
    bool is_idle() const {
        const std::string status = read_file(proc() + "status");
        const std::size_t caught = status.find("SigCgt:");
        if (caught == std::string::npos) return false;
        const unsigned long mask = std::stoul(status.substr(caught + 7), nullptr, 16);
        return (mask & (1ul << (SIGTERM - 1))) != 0 &&
               status.find("State:\tS") != std::string::npos;
    }

    pid_t pid_ = -1;
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
        setting_.variables = {{"HOME", home_}, {"QT_QPA_PLATFORM", "offscreen"}};
        setting_.errors = sandbox_.file("errors");
    }
    int run_and_end(int signal, const std::vector<std::string>& arguments,
                    const std::string& shows) {
        Process dorn(arguments, setting_);
        EXPECT_TRUE(dorn.shows(shows)) << shows;
        const int status = dorn.end(signal);
        errors_ = own_lines(sandbox_.read("errors"));
        return status;
    }

    Sandbox sandbox_;
    std::string home_, shown_, kept_, errors_;
    ChildSetting setting_;
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
    EXPECT_EQ(record.flags, 0xFF000925u);
    record.win_width = 700;
    record.column_width[0] = 222;
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
    setting_.variables["HOME"] = "";
    EXPECT_EQ(run_and_end(SIGTERM, {shown_}, shown_), 0);
    EXPECT_EQ(errors_, "DORN error: unable to create config directory /.or/dorn\n");
}

TEST_F(Start, StartDirectoryIsTheFirstArgumentThatIsNoOption) {
    const std::string here = shown_;
    ASSERT_EQ(chdir(here.c_str()), 0);
    sandbox_.mkdir("shown/sub");
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"-x10", home_}, home_},     {{"-x", "10", home_}, here}, {{"sub"}, here + "/sub"},
        {{home_ + "/missing"}, here}, {{"-h200", "-w300"}, here},  {{home_, "-w300"}, home_},
    };
    for (const auto& [arguments, shows] : cases)
        EXPECT_EQ(run_and_end(SIGTERM, arguments, shows), 0) << arguments[0];
    ASSERT_EQ(chdir("/"), 0);
}

TEST_F(Start, ConfigurationDirectoryDoesNotFollowTheWorkingOne) {
    ASSERT_EQ(chdir(sandbox_.path()), 0);
    EXPECT_EQ(init_config_directory("home"), kept_);
    ASSERT_EQ(chdir("/"), 0);
}

TEST_F(Start, WindowChangeSignalsRereadAndNeverEndIt) {
    Process dorn({shown_}, setting_);
    ASSERT_TRUE(dorn.shows(shown_));
    EXPECT_EQ(read_file(dorn.proc() + "comm"), "dorn\n")
        << "the name that the broadcast after a file operation goes to";
    for (int i = 0; i < 200; ++i)
        dorn.send(SIGWINCH);
    for (const int signal : {SIGCHLD, SIGPIPE, SIGALRM})
        dorn.send(signal);
    ASSERT_TRUE(dorn.shows(shown_));
    EXPECT_EQ(dorn.end(SIGTERM), 0);
}

}  // namespace
}  // namespace dorn
