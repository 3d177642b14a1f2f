#include "dirmodel/entry_text.h"

#include <cstdint>
#include <cstring>
#include <ctime>
#include <gtest/gtest.h>
#include <iomanip>
#include <sstream>

using namespace dorn;

namespace {

std::string permissions(uint32_t mode) {
    std::string text(11, '.');
    int at = 0;
    for (int part = 0; part <= 4; ++part) {
        dir_get_permissions(mode, text.data() + at, part);
        at += part == 0 ? 1 : 3;
    }
    return text;
}

TEST(EntryText, PermissionsComeInPieces) {
    const std::pair<uint32_t, const char*> rows[] = {
        {0755, "-rwxr-xr-x-"},   {0000, "-----------"},   {07777, "-rwsrwsrwts"},
        {07000, "---S--S--ts"},  {040750, "brwxr-x----"}, {0100644, "lrw-r--r---"},
        {020600, "brw--------"}, {010600, "prw--------"},
    };
    for (const auto& [mode, text] : rows)
        EXPECT_EQ(permissions(mode), text) << std::oct << mode;
}

TEST(EntryText, SizesHaveTheirUnits) {
    const std::pair<int64_t, const char*> rows[] = {
        {1023, "1023 bytes"},   {1024, "1.0KB"},  {1048575, "1024.0KB"},
        {1048576, "1.0MB"},     {-1, "-1 bytes"}, {INT64_MAX, "8796093022208.0MB"},
        {INT64_MIN, "0 bytes"}, {1536, "1.5KB"},
    };
    for (const auto& [size, text] : rows)
        EXPECT_STREQ(ll2str(size), text);
    const std::pair<int32_t, std::string> totals[] = {
        // with the whole remainder
        {1023, "1023 byte_count"}, {1536, "1.512KB"},           {1023999, "999.1023KB"},
        {1536000, "1.512000MB"},   {INT32_MAX, "2.99483647GB"}, {-5, "-5 byte_count"},
    };
    for (const auto& [bytes, expected] : totals) {
        char text[32];
        EXPECT_EQ(es_generate_byte_string(text, bytes), static_cast<int>(expected.size()));
        EXPECT_EQ(text, expected);
    }
}

std::string time_text(int64_t time, int style) {
    char text[100] = "before";
    const int length = es_generate_time_string(text, time, style);
    EXPECT_EQ(length, static_cast<int>(std::strlen(text)));
    return text;
}

std::string formatted(std::time_t time, const char* format) {
    std::ostringstream text;
    text << std::put_time(std::localtime(&time), format);
    return text.str();
}

constexpr int64_t kHour = 3600;
constexpr int64_t kDay = 24 * kHour;

TEST(EntryText, AgesAreCountedInTheUnitThatFits) {
    // Each is far enough from a border for a slow run.
    const std::pair<int64_t, const char*> rows[] = {
        {150, " 2 minutes"},       {119 * 60, " 119 minutes"}, {121 * 60, " 2 hours"},
        {47 * kHour, " 47 hours"}, {49 * kHour, " 2 days"},    {59 * kDay, " 59 days"},
        {61 * kDay, " 2 months"},  {355 * kDay, " 11 months"},
    };
    const int64_t now = std::time(nullptr);
    for (const auto& [elapsed, text] : rows)
        EXPECT_EQ(time_text(now - elapsed, 0), text);
    EXPECT_EQ(time_text(now - 400 * kDay, 0), formatted(now - 400 * kDay, " %m/%d/%Y"));
    EXPECT_EQ(time_text(now + 3600, 0).substr(0, 6), " 42949") << "a time to come";
}

TEST(EntryText, DatesNameTheDayWhereItIsNear) {
    const int64_t now = std::time(nullptr);
    const std::tuple<int64_t, int, const char*> rows[] = {
        {now - 7 * kDay, 1, " %m/%d/%Y"},
        {now - 3 * kDay, 1, " %I:%M %p %A"},
        {now - kDay, 1, " %I:%M %p yesterday"},
        // 2.5 hours are 25 steps of 360 seconds: more than 23 whatever the hour.
        {now - 9000, 1, " %I:%M %p yesterday"},
        {now + 5, 1, " %I:%M %p today"},
        {86400, 2, " %m/%d/%Y %I:%M %p"},
        {now, 3, "before"},
    };
    for (const auto& [time, style, format] : rows)
        EXPECT_EQ(time_text(time, style), formatted(time, format));
    EXPECT_EQ(time_text(INT64_MAX, 2), "") << "no such year";
}

}  // namespace
