// Whole processes: start-up, what is kept per user, and the ways in which the program ends.
#include "config/config.h"
#include "support/child.h"
#include "support/sandbox.h"

#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {
namespace {

using Words = std::vector<std::string>;

// A dorn of this build, run offscreen.
class Start : public ::testing::Test {
  protected:
    Start() {
        for (const char* name : {"home", "home/.or", "shown"})
            sandbox_.mkdir(name);
        sandbox_.link(DORN_PROGRAM, "program");
        setting_.variables = {{"HOME", sandbox_.file("home")}, {"QT_QPA_PLATFORM", "offscreen"}};
        setting_.errors = sandbox_.file("errors");
        setting_.directory = shown_;
    }
    ~Start() override {
        if (process_ >= 0) end(SIGKILL);
    }

    // Starts it and waits until it shows that directory.
    void start(Words arguments, const std::string& directory) {
        arguments.insert(arguments.begin(), sandbox_.file("program"));
        process_ = start_child(arguments, setting_);
        EXPECT_TRUE(shows(directory)) << directory;
    }
    // It works in what it shows, and has come to rest: it catches SIGTERM and sleeps.
    bool shows(const std::string& directory) const {
        return wait_until([&] {
            std::error_code error;
            if (std::filesystem::read_symlink(proc("cwd"), error) != directory) return false;
            const std::string status = read_file(proc("status"));
            const std::size_t caught = status.find("SigCgt:");
            return caught != std::string::npos && status.find("State:\tS") != std::string::npos &&
                   (std::stoul(status.substr(caught + 7), nullptr, 16) >> (SIGTERM - 1)) % 2 == 1;
        });
    }
    int end(int signal) {
        kill(process_, signal);
        return end_of_child(std::exchange(process_, -1));
    }
    // Runs it once; what it said of itself.
    std::string run(const Words& arguments, const std::string& directory, int signal = SIGTERM) {
        start(arguments, directory);
        EXPECT_EQ(end(signal), 0) << strsignal(signal);
        const std::string errors = sandbox_.read("errors");
        const std::size_t own = errors.find("DORN");
        return own == std::string::npos ? "" : errors.substr(own, errors.find('\n', own) - own);
    }
    std::string proc(const std::string& name) const {
        return "/proc/" + std::to_string(process_) + "/" + name;
    }
    std::string kept(const std::string& name) const {
        return sandbox_.read("home/.or/dorn/" + name);
    }
    void keep(const std::string& name, const std::string& content) const {
        sandbox_.write("home/.or/dorn/" + name, content);
    }

    Sandbox sandbox_;
    const std::string shown_ = sandbox_.file("shown");
    ChildSetting setting_;
    pid_t process_ = -1;
};

TEST_F(Start, EverySignalThatEndsTheProgramSaves) {
    for (const int signal : {SIGTERM, SIGHUP, SIGINT, SIGQUIT}) {
        std::filesystem::remove_all(sandbox_.file("home/.or/dorn"));
        EXPECT_EQ(run({shown_}, shown_, signal), "");
        const std::string config = kept("config.003");
        ASSERT_EQ(config.size(), 5692u) << strsignal(signal);
        EXPECT_EQ(config[4659], '\xff') << "the highest byte of the flags";
        EXPECT_EQ(kept("hotlist.001"), "/\n");
        EXPECT_EQ(kept("fspec.001"), "*\n");
    }
    struct stat status {};
    ASSERT_EQ(stat(sandbox_.file("home/.or/dorn").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777u, 0700u);
}

TEST_F(Start, StateThatComesFromOneRunIsThereInTheNext) {
    run({shown_}, shown_);
    std::string config = kept("config.003");
    Config record;
    ASSERT_EQ(config.size(), sizeof record);
    std::memcpy(&record, config.data(), sizeof record);
    record.win_width = 700;
    record.column_width[0] = 222;
    record.show_hotlist = 0;
    std::memcpy(config.data(), &record, sizeof record);
    keep("config.003", config);
    keep("hotlist.001", shown_ + "\n/usr\n");
    run({shown_}, shown_);
    EXPECT_EQ(kept("config.003"), config) << "byte for byte";
    EXPECT_EQ(kept("hotlist.001"), shown_ + "\n/usr\n");
}

TEST_F(Start, DamagedConfigurationStartsAllTheSame) {
    sandbox_.mkdir("home/.or/dorn");
    for (const std::string& content : {std::string(100, '\xff'), std::string(5692, '\xff'),
                                       std::string(5692, '\x80'), std::string(7000, 'x')}) {
        keep("config.003", content);
        keep("hotlist.001", std::string(3000, '\xfe') + '\0');
        run({shown_}, shown_);
    }
}

TEST_F(Start, WithoutAUsableConfigurationDirectoryItSaysSoAndSavesNothing) {
    const std::string directory = sandbox_.file("home/.or/dorn"), error = "DORN error: unable to ";
    rmdir(sandbox_.file("home/.or").c_str());
    EXPECT_EQ(run({shown_}, shown_), error + "create config directory " + directory);
    sandbox_.mkdir("home/.or");
    sandbox_.write("home/.or/dorn", "a file");
    EXPECT_EQ(run({shown_}, shown_), error + "access config directory " + directory);
    EXPECT_EQ(sandbox_.read("home/.or/dorn"), "a file");
    setting_.variables["HOME"] = "";
    EXPECT_EQ(run({shown_}, shown_), error + "create config directory /.or/dorn");
}

TEST_F(Start, StartDirectoryIsTheFirstArgumentThatIsNoOption) {
    const std::string home = sandbox_.file("home");
    sandbox_.mkdir("shown/sub");
    const std::pair<Words, std::string> rows[] = {
        {{"-x10", home}, home},        {{"-x", "10", home}, shown_}, {{"sub"}, shown_ + "/sub"},
        {{home + "/missing"}, shown_}, {{"-h200", "-w300"}, shown_}, {{home, "-w300"}, home},
    };
    for (const auto& [arguments, directory] : rows)
        run(arguments, directory);
}

TEST_F(Start, SignalsThatOthersSendNeverEndIt) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "it holds signals back, of those that come close together some for ever";
#endif
    start({shown_}, shown_);
    EXPECT_EQ(read_file(proc("comm")), "dorn\n")
        << "the name that the broadcast after a file operation goes to";
    for (int i = 0; i < 200; ++i)
        kill(process_, SIGWINCH);
    for (const int signal : {SIGCHLD, SIGPIPE, SIGALRM})
        kill(process_, signal);
    EXPECT_TRUE(shows(shown_));
    EXPECT_EQ(end(SIGTERM), 0);
}

}  // namespace
}  // namespace dorn
