// zap on real processes: which it reaches, and which it leaves alone.
#include "support/child.h"
#include "support/sandbox.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {
namespace {

using Words = std::vector<std::string>;

// Of this test alone: the signal reaches every process of the user that is called so.
const std::string kName = "zt" + std::to_string(getpid());

class Zap : public ::testing::Test {
  protected:
    // A process of that name, by default of the user, that waits for a signal.
    pid_t start(const std::string& name, uid_t user = getuid()) const {
        if (!std::filesystem::is_symlink(sandbox_.file(name))) sandbox_.link("/bin/sleep", name);
        ChildSetting setting;
        setting.before = [user] {
            if (setuid(user) != 0) _exit(97);
        };
        const pid_t process = start_child({sandbox_.file(name), "60"}, setting);
        const std::string kept = name.substr(0, 15) + "\n";
        EXPECT_TRUE(wait_until([&] { return proc_file(process, "comm") == kept; })) << name;
        return process;
    }
    static std::string proc_file(pid_t process, const std::string& name) {
        return read_file("/proc/" + std::to_string(process) + "/" + name);
    }
    // The signal that ended it: SIGKILL when none did before this call.
    static int end(pid_t process) {
        kill(process, SIGKILL);
        return end_of_child(process) - 1000;
    }

    Sandbox sandbox_;
};

int zap(Words arguments) {
    arguments.insert(arguments.begin(), DORN_ADAPTORS "/zap");
    ChildSetting setting;
    setting.errors = "/dev/null";
    return end_of_child(start_child(arguments, setting));
}

TEST_F(Zap, EveryProcessOfTheNameIsReachedAndNoOther) {
    const pid_t named[] = {start(kName), start(kName)};
    const pid_t others[] = {start(kName + "x"), start(kName.substr(0, 2))};
    EXPECT_EQ(zap({"-f", "-s", "SIGUSR1", kName}), 0);
    for (const pid_t process : named)
        EXPECT_EQ(end(process), SIGUSR1);
    for (const pid_t process : others)
        EXPECT_EQ(end(process), SIGKILL);
}

TEST_F(Zap, SignalsHaveNamesAndNumbers) {
    const std::pair<Words, int> rows[] = {
        {{"-s", "SIGUSR2"}, SIGUSR2}, {{"-fs", "usr2"}, SIGUSR2}, {{"-s12"}, 12}, {{"-f"}, SIGTERM},
        {{"-s", "0"}, SIGKILL},
    };
    for (auto [words, signal] : rows) {
        const pid_t target = start(kName);
        words.push_back(kName);
        EXPECT_EQ(zap(words), 0) << words[0];
        EXPECT_EQ(end(target), signal) << words[0];
    }
    const pid_t target = start(kName);
    for (const char* wrong : {"SIG", "", "-1", "999", "15x", "SIGSIGTERM"})
        EXPECT_EQ(zap({"-s", wrong, kName}), 2) << wrong;
    for (const Words& wrong : {Words{"-s", "TERM"}, Words{kName, kName}, Words{""}})
        EXPECT_EQ(zap(wrong), 2) << wrong[0];
    EXPECT_EQ(end(target), SIGKILL);
}

TEST_F(Zap, NamesMayHoldAnythingAndAreCutAsTheSystemCutsThem) {
    for (const char* ending : {"\n(x) Z", ") Z 1\tU", "\xff\x01", "-a-very-long-name"}) {
        const std::string name = kName + ending;
        const pid_t target = start(name);
        EXPECT_EQ(zap({"-s", "USR1", name}), 0) << name;
        EXPECT_EQ(end(target), SIGUSR1) << name;
    }
}

TEST_F(Zap, AProcessThatHasEndedOrIsAnotherUsersIsNone) {
    const pid_t ended = start(kName);
    kill(ended, SIGKILL);
    const auto is_dead = [&] {
        return proc_file(ended, "status").find("State:\tZ") != std::string::npos;
    };
    EXPECT_TRUE(wait_until(is_dead));
    EXPECT_EQ(zap({kName}), 1);
    end(ended);
    if (getuid() != 0) GTEST_SKIP() << "only root can start a process as another user";
    ASSERT_EQ(chmod(sandbox_.path(), 0755), 0);
    const pid_t other = start(kName, 65534);
    EXPECT_EQ(zap({"-s", "USR1", kName}), 1) << "even by root";
    EXPECT_EQ(end(other), SIGKILL);
}

}  // namespace
}  // namespace dorn
