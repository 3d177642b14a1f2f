#include "dirmodel/entry_text.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace dorn {

namespace {

constexpr int64_t kKilobyte = 1024;
constexpr int64_t kMegabyte = 1024L * 1024;
constexpr std::size_t kTimeTextSize = 100;

char execute_mark(uint32_t mode, uint32_t execute_bit, uint32_t set_id_bit) {
    const bool set_id = (mode & set_id_bit) != 0;
    if ((mode & execute_bit) != 0) return set_id ? 's' : 'x';
    return set_id ? 'S' : '-';
}

// Bit tests in this order, not type comparisons: a directory gives "b".
char type_mark(uint32_t mode) {
    struct Row {
        uint32_t bits;
        char mark;
    };
    constexpr Row kRows[] = {{0x6000, 'b'}, {0x2000, 'c'}, {0x4000, 'd'}, {0x1000, 'p'},
                             {0xA000, 'l'}, {0x5000, 'n'}, {0xC000, 's'}};
    for (const Row& row : kRows) {
        if ((mode & row.bits) != 0) return row.mark;
    }
    return '-';
}

// " N UNIT" in `out`. The number is shown in 32 bits, unsigned: a time to come shows as a huge age.
void write_age(char* out, int64_t number, const char* unit) {
    std::snprintf(out, kTimeTextSize, " %lu %s",
                  static_cast<unsigned long>(static_cast<uint32_t>(number)), unit);
}

// Takes the result of a strftime into `out`: what did not fit leaves an empty text.
void end_time(char* out, std::size_t written) {
    if (written == 0) out[0] = '\0';
}

void write_relative_age(char* out, int64_t elapsed, const std::tm& when) {
    const int64_t minutes = elapsed / 60;
    const int64_t hours = minutes / 60;
    const int64_t days = hours / 24;
    if (elapsed < 120) return write_age(out, elapsed, "seconds");
    if (minutes < 120) return write_age(out, minutes, "minutes");
    if (hours <= 47) return write_age(out, hours, "hours");
    if (days <= 59) return write_age(out, days, "days");
    if (days > 355) return end_time(out, std::strftime(out, kTimeTextSize, " %m/%d/%Y", &when));
    write_age(out, days / 30, "months");
}

void write_near_date(char* out, int64_t elapsed, const std::tm& when) {
    constexpr int64_t kDay = 86400;
    if (elapsed > 6 * kDay)
        return end_time(out, std::strftime(out, kTimeTextSize, " %m/%d/%Y", &when));
    if (elapsed > 2 * kDay)
        return end_time(out, std::strftime(out, kTimeTextSize, " %I:%M %p %A", &when));
    end_time(out, std::strftime(out, kTimeTextSize, " %I:%M %p ", &when));
    // 360, not 3600: what is more than a few hours old counts as yesterday's.
    const char* day = elapsed / 360 + when.tm_hour > 23 ? "yesterday" : "today";
    const std::size_t length = std::strlen(out);
    std::snprintf(out + length, kTimeTextSize - length, "%s", day);
}

}  // namespace

void dir_get_permissions(uint32_t mode, char* out, int part) {
    switch (part) {
        case 0:
            out[0] = type_mark(mode);
            break;
        case 1:
            out[0] = (mode & 0x100) != 0 ? 'r' : '-';
            out[1] = (mode & 0x80) != 0 ? 'w' : '-';
            out[2] = execute_mark(mode, 0x40, 0x800);
            break;
        case 2:
            out[0] = (mode & 0x20) != 0 ? 'r' : '-';
            out[1] = (mode & 0x10) != 0 ? 'w' : '-';
            out[2] = execute_mark(mode, 0x8, 0x400);
            break;
        case 3:
            out[0] = (mode & 0x4) != 0 ? 'r' : '-';
            out[1] = (mode & 0x2) != 0 ? 'w' : '-';
            out[2] = (mode & 0x200) != 0 ? 't' : (mode & 0x1) != 0 ? 'x' : '-';
            break;
        case 4:
            out[0] = (mode & 0x200) != 0 ? 's' : '-';
            break;
        default:
            break;
    }
}

const char* ll2str(int64_t size) {
    static char sText[40];
    if (size >= kMegabyte) {
        std::snprintf(sText, sizeof sText, "%.1fMB", static_cast<double>(size) / kMegabyte);
    } else if (size >= kKilobyte) {
        std::snprintf(sText, sizeof sText, "%.1fKB", static_cast<double>(size) / kKilobyte);
    } else {
        std::snprintf(sText, sizeof sText, "%ld bytes",
                      static_cast<long>(static_cast<int32_t>(size)));
    }
    return sText;
}

int es_generate_byte_string(char* out, int64_t bytes) {
    constexpr std::size_t kRoom = 32;
    const long n = bytes;
    if (n > 1023999999) {
        return std::snprintf(out, kRoom, "%ld.%1ldGB", n / 1024000000, n % 1024000000);
    }
    if (n > 1023999) return std::snprintf(out, kRoom, "%ld.%1ldMB", n / 1024000, n % 1024000);
    if (n > 1023) return std::snprintf(out, kRoom, "%ld.%1ldKB", n / 1024, n % 1024);
    return std::snprintf(out, kRoom, "%ld byte_count", n);
}

int es_generate_time_string(char* out, int64_t time, int style) {
    const std::time_t seconds = time;
    const int64_t elapsed = static_cast<int64_t>(std::time(nullptr)) - time;
    std::tm when{};
    if (style >= 0 && style <= 2 && localtime_r(&seconds, &when) == nullptr) {
        out[0] = '\0';
    } else if (style == 0) {
        write_relative_age(out, elapsed, when);
    } else if (style == 1) {
        write_near_date(out, elapsed, when);
    } else if (style == 2) {
        end_time(out, std::strftime(out, kTimeTextSize, " %m/%d/%Y %I:%M %p", &when));
    }
    return static_cast<int>(std::strlen(out));
}

const char* cvt2c(uint64_t value) {
    static char sText[40];
    char* digit = sText + sizeof sText - 1;
    *digit = '\0';
    int written = 0;
    do {
        if (written > 0 && written % 3 == 0) *--digit = ',';
        *--digit = static_cast<char>('0' + value % 10);
        ++written;
        value /= 10;
    } while (value != 0);
    return digit;
}

}  // namespace dorn
