#include "dirmodel/entry_text.h"

#include <cstdint>
#include <ctime>
#include <gtest/gtest.h>
#include <iomanip>
#include <sstream>

using namespace dorn;

TEST(EntryText, PermissionsComeInPieces) {
    const std::pair<uint32_t, const char*> rows[] = {
        {0755, "-rwxr-xr-x-"},   {07777, "-rwsrwsrwts"},   {07000, "---S--S--ts"},
        {040750, "brwxr-x----"}, {0100644, "lrw-r--r---"}, {020600, "brw--------"},
        {010600, "prw--------"}};
    for (const auto& [mode, expected] : rows) {
        std::string text(11, '.');
        for (int part = 0; part <= 4; ++part)
            dir_get_permissions(mode, text.data() + (part == 0 ? 0 : part * 3 - 2), part);
        EXPECT_EQ(text, expected) << std::oct << mode;
    }
}

TEST(EntryText, SizesHaveTheirUnits) {
    const std::pair<int64_t, const char*> rows[] = {
        {1023, "1023 bytes"},  {1536, "1.5KB"},  {1048575, "1024.0KB"},
        {1048576, "1.0MB"},    {-1, "-1 bytes"}, {INT64_MAX, "8796093022208.0MB"},
        {INT64_MIN, "0 bytes"}};
    for (const auto& [size, text] : rows)
        EXPECT_STREQ(ll2str(size), text);
    const std::pair<int32_t, const char*> totals[] = {
        // with the whole remainder
        {1023, "1023 byte_count"}, {1536, "1.512KB"},           {1023999, "999.1023KB"},
        {1536000, "1.512000MB"},   {INT32_MAX, "2.99483647GB"}, {-5, "-5 byte_count"}};
    for (const auto& [bytes, expected] : totals) {
        char text[32];
        es_generate_byte_string(text, bytes);
        EXPECT_STREQ(text, expected);
    }
}

TEST(EntryText, TimesAreAgesOrDatesNearAndFar) {
    constexpr int64_t kHour = 3600;
    constexpr int64_t kDay = 24 * kHour;
    // Each is far enough from a border for a slow run.
    const std::tuple<int, int64_t, const char*> rows[] = {
        {0, 150, " 2 minutes"},
        {0, 119 * 60, " 119 minutes"},
        {0, 121 * 60, " 2 hours"},
        {0, 47 * kHour, " 47 hours"},
        {0, 49 * kHour, " 2 days"},
        {0, 59 * kDay, " 59 days"},
        {0, 61 * kDay, " 2 months"},
        {0, 355 * kDay, " 11 months"},
        {0, 400 * kDay, " %m/%d/%Y"},
        {1, 7 * kDay, " %m/%d/%Y"},
        {1, 3 * kDay, " %I:%M %p %A"},
        {1, kDay, " %I:%M %p yesterday"},
        {1, 9000, " %I:%M %p yesterday"},  // 25 steps of 360 seconds: more than 23 at any hour
        {1, -5, " %I:%M %p today"},
        {2, 400 * kDay, " %m/%d/%Y %I:%M %p"},
        {3, 0, "before"},
    };
    for (const auto& [style, elapsed, format] : rows) {
        const std::time_t time = std::time(nullptr) - elapsed;
        std::ostringstream expected;
        expected << std::put_time(std::localtime(&time), format);
        char text[100] = "before";
        es_generate_time_string(text, time, style);
        EXPECT_EQ(text, expected.str());
    }
    char text[100];
    EXPECT_EQ(es_generate_time_string(text, INT64_MAX, 2), 0) << "no such year";
}
