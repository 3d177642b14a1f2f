#include "assoc/engine/command.h"

#include "dirmodel/dir_entry.h"
#include "support/fake_programs.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <sys/stat.h>

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
    CommandTest() {
        std::filesystem::current_path(sandbox_.path());
        fakes_.add("show");
    }
    ~CommandTest() override {
        std::filesystem::current_path("/");
        gDir = nullptr;
    }

    // What "show" got since the last call, when all has ended.
    FakePrograms::Runs shown() const {
        FakePrograms::wait();
        return fakes_.runs("show");
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

TEST_F(CommandTest, TemplatesBecomeCommandLines) {
    const std::string names = quoted({"a b", "c"});
    const std::pair<const char*, const char*> rows[] = {
        {"lpr", "lpr 'a b' 'c' "},
        {"lpr\r\n", "lpr 'a b' 'c' "},
        {"echo \\@ '@'", "echo @ 'a b' 'c' "},
        {"x \"@\"|y @z", "x 'a b' 'c' |y 'a b' 'c' z"},
        {"x \\@", "x \\@ 'a b' 'c' "},  // without an "@" it stays as it is
        {"x 'a'@'b'", "x 'a''a b' 'c' 'b'"},
        {"x '@ y'", "x ''\\''a b'\\'' '\\''c'\\''  y'"},
        {"x @\\", "x 'a b' 'c' \\"},
    };
    for (const auto& [command, line] : rows)
        EXPECT_EQ(command_line(command, names), line) << command;
    EXPECT_EQ(command_line("x \"@ y\"", "'$a`b\\\"' "), "x \"'\\$a\\`b\\\\\\\"'  y\"");
}

TEST_F(CommandTest, WhatIsSelectedDecidesWhetherACommandRuns) {
    const mode_t directory = S_IFDIR | 0755;
    list({{"a b"}, {"no", false}, {"c"}});
    EXPECT_EQ(file_cmd("  show -x @", nullptr), 0);
    EXPECT_EQ(shown(), (FakePrograms::Runs{{"-x", "a b", "c"}}));
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
    EXPECT_EQ(shown(), (FakePrograms::Runs{{"a"}, {"a"}, {"a"}}));
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
    EXPECT_EQ(misc_spawn(0, {"show", "$(x)", ""}), 0);
    EXPECT_EQ(misc_spawn(0, {"no such program"}), -1);
    EXPECT_EQ(misc_spawn(0, {}), -1);
    EXPECT_EQ(shown(), (FakePrograms::Runs{{"$(x)", ""}, {"0"}, {"7"}, {"a b"}}));
    EXPECT_EQ(fakes_.runs("orterm"), (FakePrograms::Runs{{"-U", "/bin/sh", "-c", "ortermx"},
                                                         {"-z", "show", "a b"},
                                                         {"-zU", "/bin/sh", "-c", "group"},
                                                         {"group"}}));
}

TEST_F(CommandTest, ThousandsOfNamesReachOneCommand) {
    std::vector<std::string> names;
    std::vector<Listed> entries;
    for (int i = 0; i < 4000; ++i) {
        names.push_back(std::to_string(10000 + i) + " \xc3\xa4 $(touch bad)`touch bad`" +
                        std::string(30, '"'));
        entries.push_back({names.back()});
    }
    list(entries);
    for (const char* command : {"show", "orterm show"}) {
        EXPECT_EQ(file_cmd(command, nullptr), 0);
        EXPECT_EQ(shown(), FakePrograms::Runs{names}) << command;
    }
    EXPECT_TRUE(std::filesystem::is_empty(sandbox_.path()));
}

std::vector<std::string> shell_names() {
    std::vector<std::string> names = hostile_names();
    for (const char* name :
         {"';touch bad;'", "\";touch bad;\"", "\ntouch bad #", ">bad", "\\';touch bad;\\'",
          "$'\\'';touch bad;", "}\n)\ntouch bad\n", "\xe2\x80\xae;touch bad"})
        names.push_back(name);
    names.push_back(std::string(127, '\'') + std::string(128, '"'));
    for (const char c : std::string("!\"#$%&()*+,:;<=>?@[\\]^`{|}\t\r\n\x7f"))
        names.push_back(std::string(1, c));
    return names;
}

// Templates, and what a program gets of a name that is "<>" there, argument by argument.
const std::pair<const char*, const char*> kForms[] = {
    {"show", "<>"},
    {"show @", "<>"},
    {"show '@'", "<>"},
    {"show \"@\"", "<>"},
    {"show 1@2", "1<>|2"},
    {"show \\@ '\\@' @", "@|@|<>"},
    {"show \\\\@", "\\@|<>"},
    {"show 'a'@'b'", "a<>|b"},
    {"show \\'@\\'", "'<>|'"},
    {"show 'it is @'", "it is '<>' "},
    {"show \"it is @\"", "it is '<>' "},
    {"sh -c 'show @'", "<>"},
    {"sh -c \"show @\"", "<>"},
    {"sh -c 'show \"@\"'", "<>"},
    {"sh -c \"show '@'\"", "<>"},
    {"orterm -z show @", "<>"},
};

// The arguments of that form, an apostrophe of the name as a command gets it.
std::vector<std::string> arguments_of(const std::string& form, const std::string& name) {
    std::string received = name;
    for (std::size_t at = 0; (at = received.find('\'', at)) != std::string::npos;)
        received.replace(at, 1, "\\047");
    std::istringstream stream(form);
    std::vector<std::string> arguments;
    for (std::string argument; std::getline(stream, argument, '|');) {
        const std::size_t place = argument.find("<>");
        if (place != std::string::npos) argument.replace(place, 2, received);
        arguments.push_back(argument);
    }
    return arguments;
}

TEST_F(CommandTest, NamesNeverBecomeCode) {
    for (const auto& [command, form] : kForms) {
        FakePrograms::Runs expected;
        for (const std::string& name : shell_names()) {
            EXPECT_EQ(file_cmd(command, name.c_str()), 0) << command << "  " << name;
            expected.push_back(arguments_of(form, name));
        }
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(shown(), expected) << command;
        EXPECT_EQ(fakes_.runs("orterm").size(), expected.size());
        EXPECT_TRUE(std::filesystem::is_empty(sandbox_.path())) << command;
    }
}

TEST_F(CommandTest, HostileNamesAreNotRunWhereNoQuotesFit) {
    const auto is_plain = [](char c) {
        return c < 0 || std::isalnum(c) != 0 || std::strchr("/_.,+-@%=: ", c) != nullptr;
    };
    // Where further rules hold the shell is given no name that they could make something of.
    for (const char* command :
         {"show `echo @`", "show \"`echo @`\"", "show $(( @ ))", "sh -c 'show \"x @\"'",
          "sh -c \"show 'x @'\"", "sh -c 'show # @'", "show $@", "show \"$(show @)\"", "show << @",
          "show $'a\\' @", "show x >& @", "sh -c '((x = @))'", "sh -c \"((x = @))\""}) {
        for (const std::string& name : shell_names()) {
            EXPECT_EQ(command_line(command, quoted({name})).has_value(),
                      std::ranges::all_of(name, is_plain))
                << command << "  " << name;
        }
        EXPECT_EQ(file_cmd(command, "$(touch bad)"), -1);
    }
    // A newline would end the comment; the end of the quotes is missing.
    for (const char* command : {"show # don't @", "show # don't", "show 'x "})
        EXPECT_EQ(file_cmd(command, "\ntouch bad #"), 0);
    EXPECT_EQ(shown(), (FakePrograms::Runs{{}, {}}));
    EXPECT_TRUE(std::filesystem::is_empty(sandbox_.path()));
}

}  // namespace
}  // namespace dorn
