#include "platform/usage.h"

#include <gtest/gtest.h>

using namespace dorn;

namespace {

WindowOptions parse(std::vector<const char*> arguments, std::string* error) {
    arguments.insert(arguments.begin(), "dorn");
    return usage_parse(static_cast<int>(arguments.size()), arguments.data(), error);
}

TEST(UsageTest, TheWindowOptionsAreFoundAroundTheDirectory) {
    const std::vector<const char*> rows[] = {
        {"-x", "10", "-y", "-5", "-h", "200", "-w", "300", "-S", "m", "-s", ":1"},
        {"/tmp", "-x10", "-y-5", "other", "-h200", "-w300", "-Sm", "-s:1", "--", "-x20"},
    };
    for (const std::vector<const char*>& row : rows) {
        std::string error;
        const WindowOptions options = parse(row, &error);
        EXPECT_TRUE(!options.help && error.empty()) << error;
        EXPECT_TRUE(options.x == 10 && options.y == -5 && options.height == 200) << row[0];
        EXPECT_TRUE(options.width == 300 && options.server == ":1") << row[0];
        EXPECT_EQ(options.state, WindowOptions::State::Maximized);
    }
}

TEST(UsageTest, AFaultIsNamedAndAsksForTheUsageText) {
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"/tmp", "--help", ""},
        {"/tmp", "-x", "option -x needs a value"},
        {"/tmp", "-x10%s", "option -x can't be \"10%s\""},
        {"/tmp", "-x99999999999", "option -x can't be \"99999999999\""},
        {"/tmp", "-w0", "option -w can't be \"0\""},
        {"-h", "", "option -h can't be \"\""},
        {"/tmp", "-Sx", "option -S can't be \"x\""},
        {"/tmp", "-z", "unknown option -z"},
        {"/tmp", "--help=x", "unknown option --help=x"},
    };
    for (const auto& [first, second, expected] : rows) {
        std::string error;
        EXPECT_TRUE(parse({first, second}, &error).help) << second;
        EXPECT_EQ(error, expected);
    }
}

}  // namespace
