#include "platform/spawn.h"

#include "support/sandbox.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <pthread.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace dorn {
namespace {

class SpawnTest : public testing::Test {
  protected:
    void SetUp() override {
        path_before_ = std::getenv("PATH");
    }
    void TearDown() override {
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
    std::string path_before_;
};

TEST_F(SpawnTest, ChildrenInheritNoSignalSettingAndNoDescriptor) {
    const int open_one = open("/dev/null", O_RDONLY);
    ASSERT_GT(open_one, 2);
    const int high = fcntl(open_one, F_DUPFD, 700);
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    std::map<int, sighandler_t> handlers;
    for (const int number : {SIGCHLD, SIGPIPE, SIGXFSZ, SIGINT, SIGHUP, SIGQUIT})
        handlers[number] = std::signal(number, SIG_IGN);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const std::string text = output_of(
        "grep -E '^Sig(Blk|Ign)' /proc/self/status; echo /proc/self/fd/*; "
        "test $(cut -d' ' -f5 /proc/$$/stat) = $$ && echo own group");
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    for (const auto& [number, handler] : handlers)
        std::signal(number, handler);
    close(high);
    close(open_one);
    // The C library keeps two signals of its own ignored between fork and exec.
    constexpr unsigned long library = 3UL << 31;
    EXPECT_EQ(std::stoul(text.substr(text.find("SigBlk:") + 7), nullptr, 16), 0u) << text;
    EXPECT_EQ(std::stoul(text.substr(text.find("SigIgn:") + 7), nullptr, 16) & ~library, 0u)
        << text;
    // The shell's own descriptors, and the one it reads that folder with.
    EXPECT_NE(text.find("/fd/0 /proc/self/fd/1 /proc/self/fd/2 /proc/self/fd/3\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("own group"), std::string::npos) << text;
}

TEST_F(SpawnTest, TheEnvironmentAndTheArgumentsArriveAsTheyAre) {
    setenv("ODD", "a b\n\xff'", 1);
    EXPECT_EQ(output_of("printf '[%s]' \"$ODD\""), "[a b\n\xff']");
    unsetenv("ODD");
    errno = 0;
    EXPECT_EQ(spawn_program(sandbox_.file("missing"), {"missing"}), -1);
    EXPECT_EQ(errno, ENOENT);
}

// Within a copy of this program: it is deleted and started again.
void start_again_without_file() {
    std::array<char, 4096> self{};
    ASSERT_GT(readlink("/proc/self/exe", self.data(), self.size()), 0);
    ASSERT_EQ(unlink(self.data()), 0);
    const int process =
        spawn_program(orrin_program("/usr/orrin/bin/dorn"), {"dorn", "--gtest_list_tests"});
    int status = -1;
    ASSERT_EQ(waitpid(process, &status, 0), process);
    EXPECT_EQ(status, 0);
}

TEST_F(SpawnTest, TheRunningProgramStartsAgainWhenItsFileIsGone) {
    if (std::getenv("DORN_TEST_IN_COPY") != nullptr) {
        start_again_without_file();
        return;
    }
    const std::string copy = sandbox_.file("copy");
    std::filesystem::copy_file("/proc/self/exe", copy);
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
    setenv("PATH", ("/nowhere:" + std::string(sandbox_.path())).c_str(), 1);
    for (const std::string& name :
         {std::string("/usr/orrin/bin/orterm"), std::string("orterm"), own})
        EXPECT_EQ(orrin_program(name), own) << name;
    EXPECT_EQ(orrin_program("/usr/orrin/bin/dorn"),
              std::filesystem::read_symlink("/proc/self/exe"));
    for (const std::string& name :
         {std::string("dorn"), std::string("data"), std::string("folder"), sandbox_.file("data"),
          sandbox_.file("folder"), std::string("/usr/bin/orterm"), std::string("/usr/orrin/bin/"),
          std::string("/usr/orrin/bin/missing"), std::string()})
        EXPECT_EQ(orrin_program(name), "") << name;
    ASSERT_EQ(chdir(sandbox_.path()), 0);
    setenv("PATH", "/nowhere::/bin", 1);
    EXPECT_EQ(orrin_program("orterm"), "./orterm");
    ASSERT_EQ(chdir("/"), 0);
    unsetenv("PATH");
    EXPECT_NE(orrin_program("sh"), "");
}

}  // namespace
}  // namespace dorn
