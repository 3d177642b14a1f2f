#include "destmenus/dest_scan.h"

#include "platform/dirstream.h"
#include "support/sandbox.h"

#include <QApplication>
#include <QTest>

#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <mutex>
#include <unistd.h>

namespace dorn {
namespace {

/// A scan, and what it tells as text: the names after each showing, and each one's kind.
class ToldScan {
  public:
    explicit ToldScan(const std::string& path, bool hide_dot = false) {
        scan->path = path;
        scan->hide_dot = hide_dot;
        scan->on_names = [this](const std::vector<std::string>& names, bool whole) {
            EXPECT_EQ(scan->stop, 0);
            std::string& text = showings.emplace_back();
            for (const std::string& name : names)
                text += name + " ";
            if (whole) text += "|";
        };
        scan->on_checked = [this](std::size_t first, const std::vector<DestKind>& found) {
            EXPECT_EQ(scan->stop, 0);
            EXPECT_EQ(first, kinds.size());
            for (DestKind kind : found)
                kinds += "?>-"[static_cast<int>(kind)];
        };
        EXPECT_EQ(dest_scan_start(scan), 0);
    }

    std::shared_ptr<DestScan> scan = std::make_shared<DestScan>();
    std::vector<std::string> showings;
    std::string kinds;
};

TEST(DestScan, OnlyDirectoriesAreToldAndWhichOfThemHaveDirectories) {
    const Sandbox sandbox;
    for (const char* name : {"4294967297", "10", "9", "9/sub", "b", "b/.hidden", ".dot", ".dot/sub",
                             "x\ny\xff", "x\ny\xff/in", "-rf"})
        sandbox.mkdir(name);
    sandbox.write("file");
    sandbox.write("-rf/file");
    sandbox.link("../9", "10/link");
    sandbox.link("9", "link");
    sandbox.link("file", "to_file");
    sandbox.link("nowhere", "dangling");
    const std::tuple<std::string, bool, std::string, std::string> rows[] = {
        {sandbox.path(), false, "-rf .dot 9 10 4294967297 b link x\ny\xff |", "->>>->>>"},
        {sandbox.path(), true, "-rf 9 10 4294967297 b link x\ny\xff |", "->>-->>"},
        {sandbox.file("link"), true, "sub |", "-"},
        {sandbox.file("file"), false, "|", ""},
        {sandbox.file("missing"), false, "|", ""},
        {std::string(5000, '/') + "x", false, "|", ""},
    };
    for (const auto& [path, hide_dot, names, kinds] : rows) {
        const ToldScan told(path, hide_dot);
        EXPECT_TRUE(QTest::qWaitFor([&] { return told.scan->finished != 0; })) << path;
        ASSERT_FALSE(told.showings.empty()) << path;
        EXPECT_EQ(told.showings.back(), names) << path;
        EXPECT_EQ(told.kinds, kinds) << path;
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
    const ToldScan told(sandbox.path());
    // Those that stand before the dead one in the directory, wherever the disk has put that.
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return !told.showings.empty() || first_name(sandbox) == "dead"; }));
    for (const std::string& showing : told.showings)
        EXPECT_FALSE(showing.ends_with('|'));
    const auto before = std::chrono::steady_clock::now();
    dest_scan_end(told.scan.get());
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(1));
    EXPECT_EQ(told.scan->finished, 1);
    const std::size_t showings = told.showings.size();
    dirstream_set_test_hook(nullptr);
    hanging.unlock();
    QApplication::processEvents();
    EXPECT_EQ(told.showings.size(), showings);
}

}  // namespace
}  // namespace dorn
