#include "platform/usage.h"

#include <gtest/gtest.h>
#include <vector>

namespace dorn {
namespace {

WindowOptions parse(std::vector<const char*> arguments, std::string* error) {
    arguments.insert(arguments.begin(), "dorn");
    return usage_parse(static_cast<int>(arguments.size()), arguments.data(), error);
}

TEST(UsageTest, TheWindowOptionsAreFoundAroundTheDirectory) {
    const std::vector<const char*> rows[] = {
        {"-x10", "-y-5", "-h200", "-w300", "-Sm", "-s:1", "/tmp"},
        {"-x", "10", "-y", "-5", "-h", "200", "-w", "300", "-S", "m", "-s", ":1"},
        {"/tmp", "-x10", "-y-5", "other", "-h200", "-w300", "-Sm", "-s:1", "--", "-x20"},
    };
    for (const std::vector<const char*>& row : rows) {
        std::string error;
        const WindowOptions options = parse(row, &error);
        EXPECT_FALSE(options.help) << row[0];
        EXPECT_EQ(error, "");
        EXPECT_EQ(options.x, 10);
        EXPECT_EQ(options.y, -5);
        EXPECT_EQ(options.height, 200);
        EXPECT_EQ(options.width, 300);
        EXPECT_EQ(options.state, WindowOptions::State::Maximized);
        EXPECT_EQ(options.server, ":1");
    }
    std::string error;
    const WindowOptions none = parse({"/tmp"}, &error);
    EXPECT_FALSE(none.x || none.y || none.height || none.width || none.help);
    EXPECT_EQ(none.state, WindowOptions::State::Normal);
}

TEST(UsageTest, AFaultIsNamedAndAsksForTheUsageText) {
    const std::pair<std::vector<const char*>, const char*> rows[] = {
        {{"/tmp", "--help"}, ""},
        {{"-x"}, "option -x needs a value"},
        {{"-x10%s"}, "option -x can't be \"10%s\""},
        {{"-x99999999999"}, "option -x can't be \"99999999999\""},
        {{"-w0"}, "option -w can't be \"0\""},
        {{"-h", ""}, "option -h can't be \"\""},
        {{"-Sx"}, "option -S can't be \"x\""},
        {{"-z"}, "unknown option -z"},
        {{"--help=x"}, "unknown option --help=x"},
    };
    for (const auto& [arguments, expected] : rows) {
        std::string error;
        EXPECT_TRUE(parse(arguments, &error).help) << arguments[0];
        EXPECT_EQ(error, expected);
    }
}

}  // namespace
}  // namespace dorn
