#include "fileops/engine/progress.h"

#include <gtest/gtest.h>
#include <limits>

using namespace dorn;

TEST(ProgressTest, TheTimeLeftIsToldInTheUnitThatSuitsIt) {
    const std::pair<int32_t, const char*> rows[] = {
        {-2, " "},
        {0, " "},
        {1, "1 seconds"},
        {59, "59 seconds"},
        {60, "1:00 minutes"},
        {3599, "59:59 minutes"},
        {7325, "2:02 hours"},
        {std::numeric_limits<int32_t>::max(), "596523:14 hours"}};
    for (const auto& [seconds, text] : rows)
        EXPECT_EQ(time_left_text(seconds), text);
}

TEST(ProgressTest, APathIsShortenedInItsMiddleAndNeverGrows) {
    const std::tuple<std::string, std::size_t, const char*> rows[] = {
        {"/home/user/projects/alpha/beta/src/module/file.c", 30, "/home/*/beta/src/module/file.c"},
        {"", 60, ""},
        {"host:/net/first/second/third/file", 20, "host:/net/*/third/file"},
        {"no separator in all of this name", 20, "no separator in all of this name"},
        {"/head/a-name-that-is-longer-than-the-room", 20, "/head/*"},
        {"ends-in-a-colon-that-is-late:", 20, "ends-in-a-colon-that-is-late:"},
        {"ends-in-a-separator-that-is-late/", 20, "ends-in-a-separator-that-is-late/"},
        {"/long-head//abcd", 12, "/long-head//abcd"},
        {"/a/b/c/d", 3, "/a/*"},
    };
    for (auto [path, room, shown] : rows) {
        shrink_name(path.data(), room);
        EXPECT_STREQ(path.c_str(), shown);
    }
}

TEST(ProgressTest, TheTimeLeftFollowsTheRateOfTheWorkAloneAndNeverOverflows) {
    FileOp op{};
    EXPECT_EQ(fop_calc_time_left(&op, 1, 2), -1);
    const std::tuple<time_t, uint64_t, uint64_t, int32_t> rows[] = {
        {-1, 1, 2, -2},
        {10, 1000, 3000, 21},
        {10, 3000, 1000, 1},
        {10, 0, 1000, -1},
        {10, 1, std::numeric_limits<uint64_t>::max(), std::numeric_limits<int32_t>::max()},
        {70, 1000, 3000, 141}};
    for (const auto& [since, done, total, left] : rows) {
        clock_gettime(CLOCK_MONOTONIC, &op.eta_start);
        op.eta_start.tv_sec -= since;
        EXPECT_EQ(fop_calc_time_left(&op, done, total), left) << done << " of " << total;
    }
    timespec asked{};  // a question of a minute
    clock_gettime(CLOCK_MONOTONIC, &asked);
    asked.tv_sec -= 60;
    fop_shift_estimate(&op, asked);
    EXPECT_EQ(fop_calc_time_left(&op, 1000, 3000), 21);
}
