// Runs or checks the examples of the README and of the user's guide. An example is a fenced block
// or a table behind the line "<!-- example: KIND -->"; each KIND has its test here.
#include "assoc/engine/association.h"
#include "assoc/engine/command.h"
#include "dirmodel/name_match.h"
#include "menus/accelerators.h"
#include "platform/usage.h"
#include "support/fake_programs.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>

namespace dorn {
namespace {

std::vector<std::string> words_of(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

// The lines of every example of the kind, without the one that opens the block or table.
std::vector<std::string> example(const std::string& kind) {
    std::vector<std::string> lines;
    for (const char* document : {DORN_SOURCE "/README.md", DORN_SOURCE "/docs/GUIDE.md"}) {
        std::ifstream file(document);
        for (std::string line; std::getline(file, line);) {
            if (line != "<!-- example: " + kind + " -->") continue;
            std::getline(file, line);
            while (std::getline(file, line) && line != "```" && !line.empty())
                lines.push_back(line);
        }
    }
    EXPECT_FALSE(lines.empty()) << kind;
    return lines;
}

// Three columns, at least two blanks between them.
std::vector<std::string> columns_of(const std::string& line) {
    const std::size_t gap = line.find("  ");
    const std::size_t middle = line.find_first_not_of(' ', gap);
    const std::size_t last = line.find("  ", middle);
    return {line.substr(0, gap), line.substr(middle, last - middle),
            line.substr(line.find_first_not_of(' ', last))};
}

TEST(Examples, OptionLinesAreUnderstood) {
    for (const std::string& line : example("options")) {
        const std::vector<std::string> words = words_of(line);
        std::vector<const char*> arguments;
        for (const std::string& word : words)
            arguments.push_back(word.c_str());
        std::string error;
        usage_parse(static_cast<int>(arguments.size()), arguments.data(), &error);
        EXPECT_EQ(error, "") << line;
    }
}

TEST(Examples, PatternsMatchAndCommandsBecomeWhatTheGuideSays) {
    for (const std::string& line : example("patterns")) {
        const std::vector<std::string> columns = columns_of(line);
        for (const std::string& name : words_of(columns[1]))
            EXPECT_EQ(es_strcmp(name.c_str(), columns[0].c_str()), 0) << line;
        for (const std::string& name : words_of(columns[2]))
            EXPECT_NE(es_strcmp(name.c_str(), columns[0].c_str()), 0) << line;
    }
    for (const std::string& line : example("commands")) {
        const std::vector<std::string> columns = columns_of(line);
        std::string names;
        for (const std::string& name : words_of(columns[1]))
            add_name(&names, name);
        const std::string run = command_line(columns[0], names).value_or("refused");
        EXPECT_EQ(run.substr(0, run.find_last_not_of(' ') + 1), columns[2]);
    }
}

// The program that a recipe's command begins with, in front of a pipe and behind a terminal, is
// given the name as it is.
void expect_run(const std::string& command) {
    const std::string name = "-n $(a) \"b\";&\n\xff";
    std::vector<std::string> words = words_of(command.substr(0, command.find('|')));
    if (words[0] == "orterm") words.erase(words.begin(), words.begin() + 2);
    const FakePrograms fakes;
    for (const std::string& word : {words[0], std::string("less")})
        fakes.add(word);
    EXPECT_EQ(file_cmd(command.c_str(), name.c_str()), 0) << command;
    FakePrograms::wait();
    const std::string program = words[0];
    words.erase(words.begin());
    std::ranges::replace(words, "@", name);
    EXPECT_EQ(fakes.runs(program), FakePrograms::Runs{words}) << command;
}

// Each recipe is found for the name in the comment above it.
TEST(Examples, AssociationsAreReadMatchedAndRun) {
    std::string defaults, recipes;
    for (const std::string& line : example("defaults"))
        defaults += line + "\n";
    ASSERT_EQ(assoc_parse(defaults, &apat), 0);
    EXPECT_EQ(assoc_format(apat), assoc_format(assoc_defaults()));
    apat.clear();
    std::vector<std::string> names;
    for (const std::string& line : example("recipes")) {
        recipes += line + "\n";
        if (line.starts_with("# ")) names.push_back(line.substr(2, line.find(':') - 2));
    }
    ASSERT_EQ(assoc_parse(recipes, &apat), 0);
    ASSERT_EQ(apat.size(), names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(_get_pat_idx(names[i].c_str()), static_cast<int>(i)) << names[i];
        for (const std::string& command : {apat[i].open, apat[i].view, apat[i].edit})
            if (!command.empty()) expect_run(command);
    }
}

TEST(Examples, TheTableOfKeysIsThatOfTheMenus) {
    std::string expected = "|---|---|", written;
    for (const Menu& menu : menu_bar_tables()) {
        std::string submenu;
        for (const MenuItem& item : menu.items) {
            const std::string label = item.label == nullptr ? "" : item.label;
            if (item.level == 0) submenu.clear();
            if (item.kind == MenuKind::Submenu) submenu = label + " > ";
            if (item.key == nullptr) continue;
            expected += "\n| " + accelerator_text(item).toStdString() + " | " + menu.title + " > " +
                        submenu + label.substr(0, label.find("...")) + " |";
        }
    }
    std::erase(expected, '&');
    for (const std::string& line : example("keys"))
        written += "\n" + line.substr(0, line.rfind('|', line.size() - 2) + 1);
    EXPECT_EQ(written.substr(1), expected);
}

}  // namespace
}  // namespace dorn
