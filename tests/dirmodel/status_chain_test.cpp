#include "dirmodel/status_chain.h"

#include "dirmodel/dir_read.h"
#include "support/sandbox.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <vector>

namespace dorn {
namespace {

using Records = std::vector<std::pair<uint16_t, std::string>>;

// A delivered entry made by hand; RawDirEntry wants eight bytes' alignment.
std::vector<uint64_t> delivered(const std::string& name, const Records& records,
                                int32_t error = 0) {
    RawDirEntry head{};
    head.error = error;
    head.namelen = static_cast<uint16_t>(name.size());
    std::string bytes(reinterpret_cast<const char*>(&head), kRawNameOffset);
    bytes += name + '\0';
    bytes.resize((bytes.size() + 7) / 8 * 8);
    for (const auto& [type, data] : records) {
        const ExtraHeader header{static_cast<uint16_t>(data.size()), type, 0};
        bytes.append(reinterpret_cast<const char*>(&header), sizeof header);
        bytes += data;
        bytes.resize((bytes.size() + 7) / 8 * 8);
    }
    std::vector<uint64_t> entry(bytes.size() / 8);
    std::memcpy(entry.data(), bytes.data(), bytes.size());
    reinterpret_cast<RawDirEntry*>(entry.data())->reclen = static_cast<uint16_t>(bytes.size());
    return entry;
}

std::string status_of_mode(uint32_t mode) {
    FileStatus status{};
    status.mode = mode;
    return {reinterpret_cast<const char*>(&status), sizeof status};
}

TEST(StatusChain, RecordsAreFoundWhereTheNameEndsAndNoneBeyondTheLength) {
    FileStatus status{};
    for (std::size_t length = 1; length <= 17; ++length) {
        auto bytes = delivered(std::string(length, 'n'),
                               {{77, "odd"}, {kExtraLstat, status_of_mode(0100600)}});
        auto* entry = reinterpret_cast<RawDirEntry*>(bytes.data());
        EXPECT_EQ(lstat_optimize(entry, &status), 0) << length;
        EXPECT_EQ(status.mode, 0100600U);
        EXPECT_EQ(stat_optimize(entry, &status), 0);
        while (entry->reclen-- > 0)
            EXPECT_EQ(lstat_optimize(entry, &status), -1) << entry->reclen;
    }
    const auto brief = delivered("name", {{kExtraLstat, "brief"}});
    EXPECT_EQ(lstat_optimize(reinterpret_cast<const RawDirEntry*>(brief.data()), &status), -1);
}

TEST(StatusChain, CarriedLinkWithoutTargetIsBroken) {
    const Sandbox sandbox;
    sandbox.mkdir("folder");
    sandbox.link("folder", "link");
    const int directory = open(sandbox.path(), O_RDONLY | O_DIRECTORY);
    const std::pair<uint16_t, std::string> own = {kExtraLstat, status_of_mode(0120777)};
    const std::tuple<std::pair<uint16_t, std::string>, int32_t, const char*> rows[] = {
        {{kExtraLink, "folder"}, ETIMEDOUT, "folder"},
        {{kExtraStat, status_of_mode(040755)}, 0, "(unable to read link info)"}};
    for (const auto& [second, error, text] : rows) {
        const auto bytes = delivered("link", {own, second}, error);
        DirEntry entry{};
        entry_fill(&entry, *reinterpret_cast<const RawDirEntry*>(bytes.data()), directory);
        EXPECT_EQ(entry.flags, kEntryLink | kEntryBroken);
        EXPECT_STREQ(entry.link_text, text);
        EXPECT_EQ(is_directory(entry), error == 0);
        std::free(entry.link_text);
    }
    close(directory);
}

}  // namespace
}  // namespace dorn
