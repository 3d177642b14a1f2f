#include "destmenus/dest_scan.h"

#include "platform/dirstream.h"
#include "support/sandbox.h"

#include <QApplication>
#include <QTest>

#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <mutex>

namespace dorn {
namespace {

/// What a scan tells, as text: the names after each showing, and each one's kind.
struct Told {
    std::vector<std::string> showings;
    std::string kinds;
};

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : " ") + name;
    return text;
}

std::shared_ptr<DestScan> make_scan(const std::string& path, Told* told, bool hide_dot = false) {
    auto scan = std::make_shared<DestScan>();
    scan->path = path;
    scan->hide_dot = hide_dot;
    scan->on_names = [told](const std::vector<std::string>& names, bool whole) {
        told->showings.push_back(joined(names) + (whole ? "." : ""));
    };
    scan->on_checked = [told](std::size_t first, const std::vector<DestKind>& kinds) {
        EXPECT_EQ(first, told->kinds.size());
        for (DestKind kind : kinds)
            told->kinds += "?>-"[static_cast<int>(kind)];
    };
    return scan;
}

Told told_of(const std::string& path, bool hide_dot = false) {
    Told told;
    const std::shared_ptr<DestScan> scan = make_scan(path, &told, hide_dot);
    EXPECT_EQ(dest_scan_start(scan), 0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return scan->finished != 0; }));
    dest_scan_end(scan.get());
    return told;
}

TEST(DestScan, NumbersAreOrderedByValueAndOtherNamesByTheirBytes) {
    struct Row {
        const char* a;
        const char* b;
        int sign;
    };
    const Row rows[] = {
        {"9", "10", -1}, {"10", "9", 1},       {"007", "7", 0},         {"", "1", -1},
        {"a", "b", -1},  {"B", "a", -1},       {"10", "9a", -1},        {"9a", "10", 1},
        {"a", "a", 0},   {"\x7f", "\xff", -1}, {"99999999999", "1", 1},
    };
    for (const Row& row : rows) {
        const int order = _list_cmp(row.a, row.b);
        EXPECT_EQ((order > 0) - (order < 0), row.sign) << row.a << " " << row.b;
    }
}

TEST(DestScan, OnlyDirectoriesAreToldAndWhichOfThemHaveDirectories) {
    const Sandbox sandbox;
    for (const char* name : {"10", "9", "9/sub", "b", "b/.hidden", ".dot", ".dot/sub", "x\ny\xff",
                             "x\ny\xff/in", "-rf"})
        sandbox.mkdir(name);
    sandbox.write("file");
    sandbox.write("-rf/file");
    sandbox.link("9", "link");
    sandbox.link("file", "to_file");
    sandbox.link("nowhere", "dangling");
    struct Row {
        std::string path;
        bool hide_dot;
        std::string names;
        std::string kinds;
    };
    const Row rows[] = {
        {sandbox.path(), false, "-rf .dot 9 10 b link x\ny\xff.", "->>->>>"},
        {sandbox.path(), true, "-rf 9 10 b link x\ny\xff.", "->-->>"},
        {sandbox.file("10"), false, ".", ""},
        {sandbox.file("link"), true, "sub.", "-"},
        {sandbox.file("file"), false, ".", ""},
        {sandbox.file("missing"), false, ".", ""},
        {std::string(5000, '/') + "x", false, ".", ""},
    };
    for (const Row& row : rows) {
        const Told told = told_of(row.path, row.hide_dot);
        ASSERT_FALSE(told.showings.empty()) << row.path;
        EXPECT_EQ(told.showings.back(), row.names) << row.path;
        EXPECT_EQ(told.kinds, row.kinds) << row.path;
    }
}

std::mutex sHang;

void hang_on_dead(const char* name) {
    if (std::string_view(name) == "dead") const std::lock_guard wait(sHang);
}

std::string first_name(const Sandbox& sandbox) {
    return std::filesystem::directory_iterator(sandbox.path())->path().filename();
}

TEST(DestScan, NamesAreShownWhileADeadOneKeepsItWaitingAndStoppingDoesNotWait) {
    const Sandbox sandbox;
    for (int i = 0; i < 20; ++i)
        sandbox.mkdir("d" + std::to_string(i));
    sandbox.mkdir("dead");
    std::unique_lock hanging(sHang);
    dirstream_set_test_hook(hang_on_dead);
    Told told;
    const std::shared_ptr<DestScan> scan = make_scan(sandbox.path(), &told);
    ASSERT_EQ(dest_scan_start(scan), 0);
    // Those that stand before the dead one in the directory, wherever the disk has put that.
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return !told.showings.empty() || first_name(sandbox) == "dead"; }));
    for (const std::string& showing : told.showings)
        EXPECT_FALSE(showing.ends_with('.'));
    const auto before = std::chrono::steady_clock::now();
    dest_scan_end(scan.get());
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(1));
    EXPECT_EQ(scan->finished, 1);
    const std::size_t showings = told.showings.size();
    dirstream_set_test_hook(nullptr);
    hanging.unlock();
    QApplication::processEvents();
    EXPECT_EQ(told.showings.size(), showings);
}

TEST(DestScan, AThousandScansStoppedAtAnyMomentLeaveNothing) {
    const Sandbox sandbox;
    for (int i = 0; i < 200; ++i)
        sandbox.mkdir("d" + std::to_string(i));
    const auto threads = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
    };
    const auto before = threads();
    for (int i = 0; i < 1000; ++i) {
        Told told;
        const std::shared_ptr<DestScan> scan = make_scan(sandbox.path(), &told);
        ASSERT_EQ(dest_scan_start(scan), 0);
        for (int turns = i % 8; turns > 0 && scan->finished == 0; --turns)
            QApplication::processEvents(QEventLoop::AllEvents, 1);
        dest_scan_end(scan.get());
        ASSERT_EQ(scan->finished, 1);
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return threads() <= before; })) << threads();
}

}  // namespace
}  // namespace dorn
