#include "fileops/engine/progress.h"

#include <gtest/gtest.h>
#include <limits>

namespace dorn {
namespace {

TEST(ProgressTest, TheTimeLeftIsToldInTheUnitThatSuitsIt) {
    const struct {
        int32_t seconds;
        const char* text;
    } rows[] = {{-2, " "},
                {0, " "},
                {1, "1 seconds"},
                {59, "59 seconds"},
                {60, "1:00 minutes"},
                {3599, "59:59 minutes"},
                {3600, "1:00 hours"},
                {7325, "2:02 hours"},
                {std::numeric_limits<int32_t>::max(), "596523:14 hours"}};
    for (const auto& row : rows)
        EXPECT_EQ(time_left_text(row.seconds), row.text);
}

TEST(ProgressTest, APathIsShortenedInItsMiddleAndNeverGrows) {
    const std::string nine = "123456789/";
    const struct {
        std::string path;
        std::size_t max;
        std::string shown;
    } rows[] = {
        {"/home/user/projects/alpha/beta/src/module/file.c", 30, "/home/*/beta/src/module/file.c"},
        {"/" + nine + nine + nine + nine + nine + "12345678.", 60,
         "/" + nine + nine + nine + nine + nine + "12345678."},
        {"", 60, ""},
        {"host:/net/first/second/third/file", 20, "host:/net/*/third/file"},
        {"no separator in all of this name", 20, "no separator in all of this name"},
        {"a-head-that-is-longer-than-the-room/x", 20, "a-head-that-is-longer-than-the-room/x"},
        {"/head/a-name-that-is-longer-than-the-room", 20, "/head/*"},
        {"ends-in-a-colon-that-is-late:", 20, "ends-in-a-colon-that-is-late:"},
        {"ends-in-a-separator-that-is-late/", 20, "ends-in-a-separator-that-is-late/"},
        {"/long-head/b/name", 12, "/long-head/*/name"},
        {"/long-head//abcd", 12, "/long-head//abcd"},
        {"/a/b/c/d", 3, "/a/*"},
    };
    for (const auto& row : rows) {
        std::string text = row.path;
        shrink_name(text.data(), row.max);
        EXPECT_STREQ(text.c_str(), row.shown.c_str());
    }
}

class EstimateTest : public testing::Test {
  protected:
    // An operation whose first estimate lies that many seconds back.
    int32_t left(time_t since, uint64_t done, uint64_t total) {
        clock_gettime(CLOCK_MONOTONIC, &op_.eta_start);
        op_.eta_start.tv_sec -= since;
        return fop_calc_time_left(&op_, done, total);
    }
    FileOp op_{};
};

TEST_F(EstimateTest, TheTimeLeftFollowsTheRateAndNeverOverflows) {
    const uint64_t huge = std::numeric_limits<uint64_t>::max();
    EXPECT_EQ(fop_calc_time_left(&op_, 1, 2), -1);
    op_.eta_start.tv_sec += 1;
    EXPECT_EQ(fop_calc_time_left(&op_, 1, 2), -2);
    const struct {
        uint64_t done, total;
        int32_t left;
    } rows[] = {{1000, 3000, 21},
                {1000, 1000, 1},
                {3000, 1000, 1},
                {0, 1000, -1},
                {0, 0, -1},
                {1, huge, std::numeric_limits<int32_t>::max()},
                {5'000'000'000, 15'000'000'000, 21}};
    for (const auto& row : rows)
        EXPECT_EQ(left(10, row.done, row.total), row.left) << row.done << " of " << row.total;
}

TEST_F(EstimateTest, PausesAndQuestionsAreNoWorkingTime) {
    ASSERT_EQ(left(70, 1000, 3000), 141);
    timespec asked{};
    clock_gettime(CLOCK_MONOTONIC, &asked);
    asked.tv_sec -= 60;
    fop_shift_estimate(&op_, asked);
    EXPECT_EQ(fop_calc_time_left(&op_, 1000, 3000), 21);
}

}  // namespace
}  // namespace dorn
