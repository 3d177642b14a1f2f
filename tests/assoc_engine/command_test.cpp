#include "assoc/engine/command.h"

#include "dirmodel/dir_entry.h"
#include "support/fake_programs.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {
namespace {

struct Listed {
    std::string name;
    bool selected = true;
    mode_t mode = S_IFREG | 0644;
};

// Each test runs in a directory of its own, which is the shown one, with a fake terminal.
class CommandTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(chdir(sandbox_.path()), 0);
        fakes_.add("show");
    }
    void TearDown() override {
        ASSERT_EQ(chdir("/"), 0);
        gDir = nullptr;
    }

    void list(const std::vector<Listed>& entries, int32_t current = -1) {
        cache_ = std::make_unique<DirCache>();
        gDir = cache_.get();
        gDir->entries = static_cast<DirEntry**>(std::calloc(entries.size() + 1, sizeof(DirEntry*)));
        gDir->capacity = static_cast<int32_t>(entries.size());
        gDir->current = current;
        for (const Listed& entry : entries) {
            DirEntry* made = gDir->slabs.take();
            entry.name.copy(made->name, kNameSize - 1);
            made->mode = entry.mode;
            gDir->entries[gDir->count++] = made;
            if (!entry.selected) continue;
            made->flags |= kEntrySelected;
            ++gDir->n_selected;
            if (S_ISDIR(entry.mode)) ++gDir->n_selected_dirs;
        }
    }

    Sandbox sandbox_;
    FakePrograms fakes_;
    std::unique_ptr<DirCache> cache_;
};

std::string quoted(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names)
        add_name(&text, name);
    return text;
}

// The name as a command gets it.
std::string received(const std::string& name) {
    std::string text;
    for (const char c : name)
        text += c == '\'' ? "\\047" : std::string(1, c);
    return text;
}

TEST_F(CommandTest, TemplatesBecomeCommandLines) {
    const std::string names = quoted({"a b", "c"});
    const std::pair<const char*, const char*> rows[] = {
        {"ored @", "ored 'a b' 'c' "},
        {"lpr", "lpr 'a b' 'c' "},
        {"echo \\@ '@'", "echo @ 'a b' 'c' "},
        {"x \"@\"|y @z", "x 'a b' 'c' |y 'a b' 'c' z"},
        {"x \\@", "x \\@ 'a b' 'c' "},  // without an "@" it stays as it is
        {"x \\n@", "x \\n'a b' 'c' "},
        {"x 'a'@'b'", "x 'a''a b' 'c' 'b'"},
        {"x '@ y'", "x ''\\''a b'\\'' '\\''c'\\''  y'"},
        {"x \"$PWD/@\"", "x \"$PWD/'a b' 'c' \""},
        {"x @\\", "x 'a b' 'c' \\"},
        {"cp $PWD/@ /usr", "cp $PWD/'a b' 'c'  /usr"},
    };
    for (const auto& [command, line] : rows)
        EXPECT_EQ(command_line(command, names), line) << command;
    EXPECT_EQ(command_line("x \"@ y\"", "'$a`b\\\"' "), "x \"'\\$a\\`b\\\\\\\"'  y\"");
}

TEST_F(CommandTest, WhatIsSelectedDecidesWhetherACommandRuns) {
    const mode_t directory = S_IFDIR | 0755;
    list({{"a b"}, {"no", false}, {"c"}});
    EXPECT_EQ(file_cmd("  show -x @", nullptr), 0);
    FakePrograms::wait();
    EXPECT_EQ(fakes_.runs("show"), (FakePrograms::Runs{{"-x", "a b", "c"}}));
    EXPECT_EQ(fakes_.runs("orterm"),
              (FakePrograms::Runs{{"-U", "/bin/sh", "-c", "show -x 'a b' 'c' "}}));
    EXPECT_EQ(file_cmd(" \t\n", nullptr), 0);
    list({{"a"}, {"d", true, directory}});
    EXPECT_EQ(file_cmd("show", nullptr), -1);
    EXPECT_EQ(file_cmd("show", "a"), 0);
    list({{"a", false}});
    EXPECT_EQ(file_cmd("show", nullptr), -1);
    EXPECT_EQ(file_cmd("show", "a"), 0);
    list({{"a"}, {"d", false, directory}}, 1);  // the focused one is a directory
    EXPECT_EQ(file_cmd("show", nullptr), -1);
    EXPECT_EQ(file_cmd("show", "a"), -1);
    gDir->current = -2;
    EXPECT_EQ(file_cmd("show", nullptr), 0);
    FakePrograms::wait();
    EXPECT_EQ(fakes_.runs("show"), (FakePrograms::Runs{{"a"}, {"a"}, {"a"}}));
}

TEST_F(CommandTest, CommandsRunInATerminalAndTerminalCommandsAsTheyAre) {
    unsetenv("ORNIG");
    fakes_.add("ortermx");
    fakes_.add("group", "show \"$ORNIG\"");
    EXPECT_EQ(misc_run(0, 0, "  "), -1);
    EXPECT_EQ(misc_run(0, 1, " group"), 0);
    EXPECT_EQ(misc_run(0, 0, "ortermx"), 0);
    EXPECT_EQ(misc_run(7, 0, "orterm -z show 'a b' "), 0);
    EXPECT_EQ(misc_run(7, 0, "orterm\tgroup"), 0);
    FakePrograms::wait();
    EXPECT_EQ(fakes_.runs("show"), (FakePrograms::Runs{{"0"}, {"7"}, {"a b"}}));
    EXPECT_EQ(fakes_.runs("orterm"), (FakePrograms::Runs{{"-U", "/bin/sh", "-c", "ortermx"},
                                                         {"-z", "show", "a b"},
                                                         {"-zU", "/bin/sh", "-c", "group"},
                                                         {"group"}}));
    EXPECT_EQ(misc_spawn(0, {"show", "$(x)", ""}), 0);
    EXPECT_EQ(misc_spawn(0, {"no such program"}), -1);
    EXPECT_EQ(misc_spawn(0, {}), -1);
    FakePrograms::wait();
    EXPECT_EQ(fakes_.runs("show"), (FakePrograms::Runs{{"$(x)", ""}}));
    const std::string path = std::getenv("PATH");
    setenv("PATH", "/nowhere", 1);
    EXPECT_EQ(misc_run(0, 0, "show"), -1);
    setenv("PATH", path.c_str(), 1);
}

std::vector<std::string> hostile_names() {
    // clang-format off
    std::vector<std::string> names = {
        "-rf", "--help", "it's", "';touch bad;'", "\";touch bad;\"", "$(touch bad)", "`touch bad`",
        "a\ntouch bad\n", "\ntouch bad #", "a;touch bad", "a|touch bad", "a&touch bad&", ">bad",
        "a\\", "\\';touch bad;\\'", "$'\\'';touch bad;", "}\n)\ntouch bad\n", "\xff\xfe\x80",
        "\xe2\x80\xae;touch bad", " a ", std::string(255, 'x'),
        std::string(127, '\'') + std::string(128, '"'),
    };
    // clang-format on
    for (const char c : std::string("!\"#$%&()*+,:;<=>?@[\\]^`{|}~\t\r\n\x01\x7f"))
        names.push_back(std::string(1, c));
    return names;
}

// Templates, and what a program gets of a name that is "<>" in `gets`.
const std::vector<std::pair<const char*, std::vector<std::string>>> kForms = {
    {"show", {"<>"}},
    {"show @", {"<>"}},
    {"show '@'", {"<>"}},
    {"show \"@\"", {"<>"}},
    {"show 1@2", {"1<>", "2"}},
    {"show \\@ '\\@' @", {"@", "@", "<>"}},
    {"show \\\\@", {"\\@", "<>"}},
    {"show 'a'@'b'", {"a<>", "b"}},
    {"show \\'@\\'", {"'<>", "'"}},
    {"show 'it is @'", {"it is '<>' "}},
    {"show \"it is @\"", {"it is '<>' "}},
    {"sh -c 'show @'", {"<>"}},
    {"sh -c \"show @\"", {"<>"}},
    {"sh -c 'show \"@\"'", {"<>"}},
    {"sh -c \"show '@'\"", {"<>"}},
    {"orterm -z show @", {"<>"}},
};

// Where further rules hold the shell is given no name that they could make something of.
constexpr const char* kDoubtfulForms[] = {"show `echo @`",
                                          "show \"`echo @`\"",
                                          "show $(( @ ))",
                                          "sh -c 'show \"x @\"'",
                                          "sh -c \"show 'x @'\"",
                                          "sh -c 'show # @'",
                                          "show $@",
                                          "show \"$(show @)\"",
                                          "show << @"};

bool is_plain(const std::string& name) {
    return name.find_first_not_of("-rfhelpx%+,:=@ a\xff\xfe\x80") == std::string::npos;
}

TEST_F(CommandTest, NamesNeverBecomeCode) {
    for (const auto& [command, gets] : kForms) {
        FakePrograms::Runs expected;
        for (const std::string& name : hostile_names()) {
            EXPECT_EQ(file_cmd(command, name.c_str()), 0) << command << "  " << name;
            std::vector<std::string> arguments = gets;
            for (std::string& argument : arguments) {
                const std::size_t place = argument.find("<>");
                if (place != std::string::npos) argument.replace(place, 2, received(name));
            }
            expected.push_back(arguments);
        }
        FakePrograms::wait();
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(fakes_.runs("show"), expected) << command;
        EXPECT_EQ(fakes_.runs("orterm").size(), expected.size());
        EXPECT_TRUE(std::filesystem::is_empty(sandbox_.path())) << command;
    }
}

TEST_F(CommandTest, HostileNamesAreNotRunWhereNoQuotesFit) {
    for (const char* command : kDoubtfulForms) {
        for (const std::string& name : hostile_names()) {
            EXPECT_EQ(command_line(command, quoted({name})).has_value(), is_plain(name))
                << command << "  " << name;
        }
        EXPECT_EQ(file_cmd(command, "$(touch bad)"), -1);
    }
    // A newline would end the comment; the end of the quotes is missing.
    EXPECT_EQ(file_cmd("show # don't @", "\ntouch bad #"), 0);
    EXPECT_EQ(file_cmd("show # don't", "\ntouch bad #"), 0);
    EXPECT_EQ(file_cmd("show 'x ", ";touch bad;"), 0);
    FakePrograms::wait();
    EXPECT_EQ(fakes_.runs("show"), (FakePrograms::Runs{{}, {}}));
    EXPECT_TRUE(std::filesystem::is_empty(sandbox_.path()));
}

}  // namespace
}  // namespace dorn
