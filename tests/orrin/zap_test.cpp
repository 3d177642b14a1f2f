// zap on real processes: which it reaches, and which it leaves alone.
#include "support/child.h"

#include <cerrno>
#include <csignal>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace dorn {
namespace {

using Words = std::vector<std::string>;

// Of this test alone: the signal reaches every process of the user that is called so.
const std::string kName = "zt" + std::to_string(getpid());

// A process called `name` that waits for a signal, as another user where one is given.
class Target {
  public:
    explicit Target(const std::string& name, uid_t user = getuid()) {
        int ready[2];
        EXPECT_EQ(pipe(ready), 0);
        pid_ = fork();
        if (pid_ == 0) {
            if (user != getuid() && setuid(user) != 0) _exit(99);
            prctl(PR_SET_NAME, name.c_str());
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (write(ready[1], "x", 1) != 1) _exit(98);
            for (;;)
                pause();
        }
        char byte = 0;
        close(ready[1]);
        EXPECT_EQ(read(ready[0], &byte, 1), 1);
        close(ready[0]);
    }
    ~Target() {
        end();
    }
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    // The signal that ended it: SIGKILL when none did before this call.
    int end() {
        if (pid_ <= 0) return -1;
        kill(pid_, SIGKILL);
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = -1;
        return WIFSIGNALED(status) ? WTERMSIG(status) : -1;
    }
    pid_t pid() const {
        return pid_;
    }

  private:
    pid_t pid_ = -1;
};

// Lets pidfd_open fail as on a kernel without it.
bool refuse_process_descriptors() {
    sock_filter code[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, 0),  // the number of the system call
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_pidfd_open, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program = {std::size(code), code};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

int zap(Words arguments, bool old_kernel = false) {
    arguments.insert(arguments.begin(), DORN_ADAPTORS "/zap");
    ChildSetting setting;
    setting.errors = "/dev/null";
    setting.before = [old_kernel] {
        if (old_kernel && !refuse_process_descriptors()) _exit(97);
    };
    return end_of_child(start_child(arguments, setting));
}

TEST(Zap, EveryProcessOfTheNameIsReachedAndNoOther) {
    for (const bool old_kernel : {false, true}) {
        Target one(kName), two(kName), longer(kName + "x"), shorter(kName.substr(0, 2));
        EXPECT_EQ(zap({"-f", "-s", "SIGUSR1", kName}, old_kernel), 0);
        EXPECT_EQ(one.end(), SIGUSR1);
        EXPECT_EQ(two.end(), SIGUSR1);
        EXPECT_EQ(longer.end(), SIGKILL);
        EXPECT_EQ(shorter.end(), SIGKILL);
        EXPECT_EQ(zap({"-f", "-s", "SIGUSR1", kName}, old_kernel), 1) << "nobody is left";
    }
}

TEST(Zap, SignalsHaveNamesAndNumbers) {
    const std::pair<Words, int> cases[] = {
        {{"-s", "SIGUSR2"}, SIGUSR2}, {{"-fs", "usr2"}, SIGUSR2}, {{"-s12"}, 12}, {{"-f"}, SIGTERM},
        {{"-s", "0"}, SIGKILL},
    };
    for (const auto& [words, signal] : cases) {
        Target target(kName);
        Words arguments = words;
        arguments.push_back(kName);
        EXPECT_EQ(zap(arguments), 0) << words[0];
        EXPECT_EQ(target.end(), signal) << words[0];
    }
    Target target(kName);
    for (const char* wrong : {"SIG", "", "-1", "999", "USR", "15x", "SIGSIGTERM"})
        EXPECT_EQ(zap({"-s", wrong, kName}), 2) << wrong;
    for (const Words& wrong : {Words{"-s", "TERM"}, Words{kName, kName}, Words{""}})
        EXPECT_EQ(zap(wrong), 2) << wrong[0];
    EXPECT_EQ(target.end(), SIGKILL);
}

TEST(Zap, NamesMayHoldAnythingAndAreCutAsTheSystemCutsThem) {
    for (const std::string& ending : {std::string("\n(x) Z"), std::string(") Z 1\tU"),
                                      std::string("\xff\x01"), std::string("-a-very-long-name")}) {
        const std::string name = kName + ending;
        Target target(name);
        EXPECT_EQ(zap({"-s", "USR1", name}), 0) << name;
        EXPECT_EQ(target.end(), SIGUSR1) << name;
    }
}

TEST(Zap, AnotherUsersProcessIsLeftAloneEvenByRoot) {
    if (getuid() != 0) GTEST_SKIP() << "only root can start a process as another user";
    Target other(kName, 65534);
    EXPECT_EQ(zap({"-s", "USR1", kName}), 1);
    EXPECT_EQ(zap({"-s", "USR1", kName}, true), 1);
    EXPECT_EQ(other.end(), SIGKILL);
}

TEST(Zap, AProcessThatHasEndedIsNone) {
    Target target(kName);
    kill(target.pid(), SIGKILL);
    siginfo_t ended;
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(target.pid()), &ended, WEXITED | WNOWAIT), 0);
    EXPECT_EQ(zap({kName}), 1);
}

}  // namespace
}  // namespace dorn
