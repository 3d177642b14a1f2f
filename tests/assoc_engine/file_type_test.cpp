#include "assoc/engine/file_type.h"

#include "support/fake_programs.h"
#include "support/operation.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace dorn;

namespace {

std::string read_all(FILE* stream) {
    std::string text(1000, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), stream));
    return text;
}

std::string type_of(const char* path, mode_t mode) {
    std::string text = "before";
    const int result = as_get_filetype(path, mode, &text);
    EXPECT_EQ(result, text == "before" ? 0 : 1) << path;
    return text;
}

TEST(Pipes, CarryTextBothWaysWithNoShellOnThePathAndNoStandardInput) {
    const Sandbox sandbox;
    const std::string path = std::getenv("PATH");
    setenv("PATH", "/nowhere", 1);
    const int input = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 10);
    close(STDIN_FILENO);
    FILE* from = dorn::popen("printf 'a\\nb'; exit 3", "r");
    ASSERT_NE(from, nullptr);
    EXPECT_EQ(read_all(from), "a\nb");
    EXPECT_EQ(WEXITSTATUS(dorn::pclose(from)), 3);
    FILE* to = dorn::popen(("read line; echo $line >" + sandbox.file("copy")).c_str(), "w");
    ASSERT_NE(to, nullptr);
    EXPECT_EQ(std::fputs("text", to), 1);
    dorn::pclose(to);
    EXPECT_EQ(sandbox.read("copy"), "text\n");
    dup2(input, STDIN_FILENO);
    close(input);
    setenv("PATH", path.c_str(), 1);
    EXPECT_EQ(dorn::pclose(stdin), -1);
}

TEST(Pipes, AreSafeFromManyThreadsAtOnce) {
    const long before = open_descriptors();
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 12; ++i) {
        threads.emplace_back([i, &wrong] {
            for (int round = 0; round < 5; ++round) {
                const std::string word = std::to_string(i * 100 + round);
                // A child that held another's pipe would keep that one from ending.
                FILE* idle = dorn::popen("cat", "w");
                FILE* stream = dorn::popen(("echo " + word).c_str(), "r");
                const bool fine = idle != nullptr && stream != nullptr &&
                                  read_all(stream) == word + "\n" && dorn::pclose(stream) == 0 &&
                                  dorn::pclose(idle) == 0;
                wrong += fine ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(open_descriptors(), before);
}

TEST(Pipes, WithDescriptorsExhaustedFailAndLeaveNothing) {
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const long open_before = open_descriptors();
    rlimit limit = before;
    limit.rlim_cur = 64;
    setrlimit(RLIMIT_NOFILE, &limit);
    std::vector<FILE*> streams;
    errno = 0;
    for (FILE* next = dorn::popen("cat", "w"); next != nullptr; next = dorn::popen("cat", "w"))
        streams.push_back(next);
    EXPECT_EQ(errno, EMFILE);
    EXPECT_GT(streams.size(), 10u);
    EXPECT_EQ(type_of("/", S_IFDIR), "Directory");
    for (FILE* stream : streams)
        EXPECT_EQ(dorn::pclose(stream), 0);
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(open_descriptors(), open_before);
}

TEST(FileType, IsTheTextBehindTheColon) {
    const FakePrograms fakes;
    fakes.add("file",
              "case $2 in /x/*colon) echo none;; /x/none) ;; /x/short) echo 'a:';; "
              "*) echo \"$2: some text\"; echo more;; esac");
    const std::pair<const char*, const char*> rows[] = {{"/x/a:b", ": some text\n"},
                                                        {"/x/no colon", "some text\n"},
                                                        {"/x/nocolon", "none\n"},
                                                        {"/x/short", ""},
                                                        {"/x/none", "Executable"}};
    for (const auto& [path, expected] : rows)
        EXPECT_EQ(type_of(path, S_IFREG | 0100), expected) << path;
}

TEST(FileType, NamesThatAreMoreThanNamesToAShellGoToNone) {
    const FakePrograms fakes;
    fakes.add("file", "echo 'x: text'");
    std::vector<std::string> names = {"-z", "a -C", "/tmp/a\nb", "it's", "\t"};
    for (const char c : std::string("!\"#$&'()*;<>?[]\\^`{|}~"))
        names.push_back(std::string("/tmp/a") + c);
    for (const std::string& name : names)
        EXPECT_EQ(type_of(name.c_str(), S_IFREG | 0644), "Regular File") << name;
    EXPECT_TRUE(fakes.runs("file").empty());
    type_of("/tmp/aZ09_.,+-@%=: \x80\xff", S_IFREG);
    EXPECT_EQ(fakes.runs("file"), (FakePrograms::Runs{{"-L", "/tmp/aZ09_.,+-@%=:", "\x80\xff"}}));
}

TEST(FileType, WithoutTheProgramIsAWordForTheMode) {
    const FakePrograms fakes;
    fakes.add("file", "exit 1");
    const std::pair<mode_t, const char*> rows[] = {{S_IFIFO, "FIFO"},
                                                   {S_IFCHR | 0111, "Special File"},
                                                   {S_IFDIR | 0755, "Directory"},
                                                   {S_IFBLK, "Block Special File"},
                                                   {S_IFLNK | 0777, "Symbolic Link"},
                                                   {0050000, "Special Named File"},
                                                   {S_IFSOCK, "Socket"},
                                                   {0150000, "Kestrel Special Type"},
                                                   {0111, "Executable"},
                                                   {S_IFREG | 0644, "Regular File"},
                                                   {0644, "before"}};
    for (const auto& [mode, expected] : rows)
        EXPECT_EQ(type_of("/x", mode), expected);
}

}  // namespace
