#include "dirmodel/dir_read.h"

#include "config/config.h"
#include "support/headless_screen.h"
#include "support/sandbox.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <stdexcept>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace dorn {
namespace {

using Names = std::vector<std::string>;

// Directory streams call a plain function, so what it does is a global.
std::atomic<bool> sHeldBack{false};

void hold_back(const char* name) {
    while (sHeldBack && std::strcmp(name, "slow") == 0)
        std::this_thread::yield();
}

void remove_entry(const char* name) {
    if (std::strcmp(name, "vanishing") == 0) unlink(name);
}

class DirRead : public testing::Test {
  protected:
    DirRead() {
        gScreen = {};
        gConfig = &config_;
        cache_.path = sandbox_.path();
        cache_.filespec = "*";
    }
    ~DirRead() override {
        sHeldBack = false;
        dirstream_set_test_hook(nullptr);
        gStatusLimitMs = kStatusLimitMs;
        gScreen = {};
        gConfig = nullptr;
        std::filesystem::current_path("/");
    }

    Names read() {
        EXPECT_EQ(dir_read(&cache_, dir_cmp_name, 1), 0);
        expect_sound_array();
        Names list;
        for (int32_t i = 0; i < cache_.count; ++i)
            list.emplace_back(cache_.entries[i]->name);
        return list;
    }

    const DirEntry& entry(const std::string& name) const {
        DirEntry** end = cache_.entries + cache_.count;
        DirEntry** found = std::find_if(cache_.entries, end,
                                        [&](const DirEntry* entry) { return name == entry->name; });
        if (found == end) throw std::out_of_range("no entry " + name);
        return **found;
    }

    void make_files(int first, int last) const {
        for (int n = first; n <= last; ++n)
            sandbox_.write(std::to_string(n));
    }

    // Twenty entries, and one whose status does not come.
    void make_slow_directory() const {
        make_files(1, 20);
        sandbox_.write("slow");
        sHeldBack = true;
        dirstream_set_test_hook(hold_back);
    }

    // Every record stands in the array once, and the slots behind them are empty.
    void expect_sound_array() const {
        EXPECT_LE(cache_.count + cache_.spare, cache_.capacity);
        std::set<const DirEntry*> records;
        for (int32_t i = 0; i < cache_.capacity; ++i) {
            const bool used = i < cache_.count + cache_.spare;
            EXPECT_EQ(cache_.entries[i] != nullptr, used) << i;
            EXPECT_EQ(used, records.insert(cache_.entries[i]).second && used) << i;
        }
    }

    Sandbox sandbox_;
    Config config_{};
    DirCache cache_;
};

TEST_F(DirRead, EntriesAreCountedSummedAndFiltered) {
    for (const char* name : {".profile", "...", "b.h", "c.txt"})
        sandbox_.write(name);
    sandbox_.write("a.c", "12345");
    sandbox_.mkdir("d");
    sandbox_.mkdir(".e");
    sandbox_.link("d", "link");
    sandbox_.link("a.c", "other");
    struct stat folder {};
    ASSERT_EQ(stat(sandbox_.file("d").c_str(), &folder), 0);
    cache_.current = 5;
    cache_.n_selected = 3;
    EXPECT_EQ(read().size(), 9U);
    EXPECT_TRUE(cache_.current == -1 && cache_.n_selected == 0);
    EXPECT_EQ(cache_.total_size, 2 * 5 + 3 * folder.st_size);
    EXPECT_EQ(entry("d").ino, folder.st_ino);
    EXPECT_EQ(std::filesystem::current_path(), std::filesystem::canonical(sandbox_.path()));
    config_.flags = kHideDotFiles;
    EXPECT_EQ(read(), (Names{"a.c", "b.h", "c.txt", "d", "link", "other"}));
    cache_.filespec = "^*.C|*.H";
    EXPECT_EQ(read(), (Names{"a.c", "b.h", "d", "link"}));
    EXPECT_EQ(cache_.n_dirs, 2);
    EXPECT_EQ(w_instance("status2")->texts.back(), "4 read");
}

TEST_F(DirRead, AnyNameGoesThrough) {
    Names hostile = hostile_names();
    for (const std::string& name : hostile)
        sandbox_.write(name);
    sandbox_.link(std::string(1200, 't'), "long target");
    EXPECT_EQ(read().size(), hostile.size() + 1);
    for (const std::string& name : hostile)
        EXPECT_EQ(entry(name).flags, 0U) << name;
    EXPECT_EQ(std::strlen(entry("long target").link_text), 1024U);
}

TEST_F(DirRead, ReReadingReusesTheRecordsAndLosesNone) {
    make_files(1, 10);
    read();
    const std::set<DirEntry*> first(cache_.entries, cache_.entries + 10);
    cache_.entries[3]->flags |= kEntrySelected;
    make_files(11, 300);
    EXPECT_EQ(read().size(), 300U);
    EXPECT_TRUE(cache_.capacity == 384 && cache_.spare == 0);
    std::set<DirEntry*> reused;
    for (int32_t i = 0; i < cache_.count; ++i) {
        EXPECT_EQ(cache_.entries[i]->flags, 0U);
        if (first.contains(cache_.entries[i])) reused.insert(cache_.entries[i]);
    }
    EXPECT_EQ(reused, first);
}

TEST_F(DirRead, RecordOfAnEntryLeftOutIsNotLost) {
    make_files(100, 427);
    // The 128 kept ones fill the array, so the record left over at the end has no slot in it.
    for (const auto& [filter, count] :
         {std::pair("2*|3[01]*|32[0-7]", 128), {"none", 0}, {"*", 328}}) {
        cache_.filespec = filter;
        EXPECT_EQ(read().size(), static_cast<std::size_t>(count)) << filter;
    }
    EXPECT_EQ(cache_.spare, 0);
}

TEST_F(DirRead, DirectoryThatCannotBeEnteredTellsWhy) {
    sandbox_.write("file");
    read();
    const std::pair<std::string, int> rows[] = {
        {"", ENOENT},
        {sandbox_.file("missing"), ENOENT},
        {sandbox_.file("file"), ENOTDIR},
        {sandbox_.file(std::string(300, 'n')), ENAMETOOLONG}};
    for (const auto& [path, error] : rows) {
        cache_.path = path;
        EXPECT_EQ(dir_read(&cache_, dir_cmp_name, 1), -1) << path;
        EXPECT_EQ(cache_.read_error, error) << path;
        EXPECT_TRUE(cache_.count == 0 && cache_.spare == 1);
    }
    cache_.path = sandbox_.path();
    EXPECT_EQ(read(), Names{"file"});
    EXPECT_EQ(cache_.read_error, 0);
}

TEST_F(DirRead, EntryThatVanishesOrDoesNotAnswerIsShownAsUnreadable) {
    sandbox_.write("vanishing");
    std::filesystem::current_path(sandbox_.path());
    dirstream_set_test_hook(remove_entry);
    EXPECT_EQ(read().size(), 1U);
    EXPECT_EQ(entry("vanishing").flags, kEntryLink | kEntryBroken);
    EXPECT_STREQ(entry("vanishing").link_text, "(unable to read info)");
    EXPECT_EQ(entry("vanishing").uid, -1);
    make_slow_directory();
    gStatusLimitMs = 250;  // which holds for the opening, too, on a busy machine
    EXPECT_EQ(read().size(), 21U);
    EXPECT_EQ(entry("slow").flags, kEntryLink | kEntryBroken);
    EXPECT_STREQ(entry("slow").link_text, "(unable to read - timeout)");
}

TEST_F(DirRead, EventLoopIsServedAndTheCounterMovesWhileTheDirectoryIsSlow) {
    make_slow_directory();
    int served = 0;
    gScreen.on_background = [&] {
        EXPECT_EQ(dir_read(&cache_, dir_cmp_name, 1), -1) << "one read at a time";
        x_print_progress(nullptr, &cache_);
        if (++served == 5) sHeldBack = false;
    };
    EXPECT_EQ(read().size(), 21U);
    EXPECT_GE(served, 5);
    EXPECT_EQ(entry("slow").flags, 0U);
    const Names shown = w_instance("status2")->texts;
    EXPECT_EQ(shown.back(), "21 read");
    EXPECT_GT(std::set<std::string>(shown.begin(), shown.end()).size(), 1U);
}

TEST_F(DirRead, StoppedReadEndsWithWhatItHas) {
    make_slow_directory();
    gScreen.on_background = [] { dir_read_stop(); };
    EXPECT_LT(read().size(), 21U);
    sHeldBack = false;
    gScreen.on_background = nullptr;
    EXPECT_NE(dir_read(&cache_, dir_cmp_name, 1), 0) << "none begins while the program closes";
    dir_read_stop(false);
    EXPECT_EQ(read().size(), 21U);
}

TEST_F(DirRead, DirectoryThatChangesWhileItIsReadGivesEachNameOnce) {
    make_files(1, 1000);
    std::atomic<bool> done{false};
    std::thread changer([&] {
        for (int n = 1001; !done; ++n) {
            sandbox_.write(std::to_string(n));
            unlink(sandbox_.file(std::to_string(n - 1000)).c_str());
        }
    });
    for (int round = 0; round < 5; ++round) {
        const Names found = read();
        EXPECT_EQ(std::set<std::string>(found.begin(), found.end()).size(), found.size());
    }
    done = true;
    changer.join();
    std::filesystem::remove_all(sandbox_.path());
    EXPECT_EQ(dir_read(&cache_, dir_cmp_name, 1), -1);
    EXPECT_EQ(cache_.read_error, ENOENT);
}

}  // namespace
}  // namespace dorn
