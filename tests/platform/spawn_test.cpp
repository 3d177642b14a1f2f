#include "platform/spawn.h"

#include "support/sandbox.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace dorn;
using namespace std::string_literals;
namespace fs = std::filesystem;

namespace {

class SpawnTest : public testing::Test {
  protected:
    ~SpawnTest() override {
        setenv("PATH", path_before_.c_str(), 1);
    }

    /// What a shell prints when it is started to run `command`.
    std::string output_of(const std::string& command) const {
        const std::string file = sandbox_.file("output");
        SpawnFiles files;
        files.output = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        const int process = spawn_program("/bin/sh", {"sh", "-c", command}, files);
        close(files.output);
        EXPECT_GT(process, 0);
        waitpid(process, nullptr, 0);  // to its end also where children are not kept
        return read_file(file);
    }

    Sandbox sandbox_;
    std::string path_before_ = std::getenv("PATH");
};

TEST_F(SpawnTest, ChildrenInheritNoSignalSettingAndNoDescriptor) {
    const int open_one = open("/dev/null", O_RDONLY);
    const int high = fcntl(open_one, F_DUPFD, 700);
    ASSERT_GE(high, 700);
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    std::map<int, sighandler_t> handlers;
    for (const int number : {SIGCHLD, SIGPIPE, SIGXFSZ, SIGINT, SIGHUP, SIGQUIT})
        handlers[number] = std::signal(number, SIG_IGN);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const std::string text = output_of(
        "grep -cE '^SigBlk:\\s0{16}$|^SigIgn:\\s0{7}[01][08]0{7}$' /proc/self/status; "
        "echo /proc/self/fd/*; test $(cut -d' ' -f5 /proc/$$/stat) = $$ && echo own group");
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    for (const auto& [number, handler] : handlers)
        std::signal(number, handler);
    close(high);
    close(open_one);
    // The C library keeps two signals of its own ignored between fork and exec. The descriptors are
    // the shell's own, and the one it reads that folder with.
    EXPECT_EQ(text,
              "2\n/proc/self/fd/0 /proc/self/fd/1 /proc/self/fd/2 /proc/self/fd/3\nown group\n");
}

TEST_F(SpawnTest, TheEnvironmentAndTheArgumentsArriveAsTheyAre) {
    setenv("ODD", "a b\n\xff'", 1);
    EXPECT_EQ(output_of("printf '[%s]' \"$ODD\""), "[a b\n\xff']");
    unsetenv("ODD");
    errno = 0;
    EXPECT_EQ(spawn_program(sandbox_.file("missing"), {"missing"}), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(SpawnTest, TheRunningProgramStartsAgainWhenItsFileIsGone) {
    if (std::getenv("DORN_TEST_IN_COPY") != nullptr) {
        ASSERT_TRUE(fs::remove(fs::read_symlink("/proc/self/exe")));
        int status = -1;
        waitpid(spawn_program(orrin_program("/usr/orrin/bin/dorn"), {"dorn", "--gtest_list_tests"}),
                &status, 0);
        ASSERT_EQ(status, 0);
        return;
    }
    const std::string copy = sandbox_.file("copy");
    fs::copy_file("/proc/self/exe", copy);
    const std::string told =
        output_of("DORN_TEST_IN_COPY=1 " + copy + " --gtest_filter='*WhenItsFileIsGone'");
    EXPECT_NE(told.find("[  PASSED  ] 1 test"), std::string::npos) << told;
    EXPECT_NE(told.find("SpawnTest.\n"), std::string::npos) << told;
}

TEST_F(SpawnTest, OrrinPathsAreLookedUpThereFirstAndByNameNext) {
    sandbox_.script("orterm", "");
    sandbox_.write("data");
    sandbox_.mkdir("folder");
    const std::string own = sandbox_.file("orterm");
    setenv("PATH", ("/nowhere:"s + sandbox_.path()).c_str(), 1);
    const std::pair<std::string, std::string> rows[] = {
        {"/usr/orrin/bin/orterm", own},
        {"orterm", own},
        {own, own},
        {"/usr/orrin/bin/dorn", fs::read_symlink("/proc/self/exe")},
        {"dorn", ""},
        {"data", ""},
        {"folder", ""},
        {sandbox_.file("data"), ""},
        {sandbox_.file("folder"), ""},
        {"/usr/bin/orterm", ""},
        {"/usr/orrin/bin/", ""},
        {"/usr/orrin/bin/missing", ""},
        {"", ""},
    };
    for (const auto& [name, program] : rows)
        EXPECT_EQ(orrin_program(name), program) << name;
    unsetenv("PATH");
    EXPECT_NE(orrin_program("sh"), "");
}

}  // namespace
