// File lists as bytes: ours and those of other programs, both ways, whole and damaged.
#include "fileops/engine/transfer.h"

#include <gtest/gtest.h>
#include <unistd.h>

using namespace dorn;

namespace {

const std::string kHostile = "a b\n%1\t'\"\xFF\xC3\xBC#?;";

// "cut /dir: name, name | /other: name (2 left out)"
std::string told(const TransferLists& arrived) {
    std::string text = arrived.cut ? "cut" : "copy";
    for (const FileTransfer& list : arrived.lists) {
        text += " " + list.directory + ":";
        for (const std::string& name : list.names)
            text += "<" + name + ">";
    }
    if (arrived.foreign > 0) text += " left out " + std::to_string(arrived.foreign);
    return arrived.lists.empty() && arrived.foreign == 0 ? "nothing" : text;
}

TransferLists of(const FileTransfer& list, bool cut) {
    return {cut, {list}, 0, {}};
}

TEST(Transfer, EveryTypeGivesTheNamesBackAsTheyWereByteForByte) {
    for (const char* directory : {"/", "/d\xFE ir", "/a/b"}) {
        const FileTransfer list{directory, {"plain", "", kHostile, std::string(255, 'x'), "-"}};
        FileTransfer without_empty = list;
        std::erase(without_empty.names, "");
        for (const bool cut : {false, true}) {
            for (const char* type :
                 {kTypeTransfiles, kTypeGnomeFiles, kTypeMateFiles, kTypeUriList}) {
                const FileTransfer& expected = type == kTypeTransfiles ? list : without_empty;
                const TransferLists arrived =
                    transfer_unpack(transfer_pack(of(list, cut), type), type,
                                    transfer_pack(of(list, cut), kTypeKdeCut));
                EXPECT_EQ(told(arrived), told(of(expected, cut))) << type;
            }
        }
    }
}

TEST(Transfer, TheBytesAreThoseThatOtherProgramsRead) {
    const FileTransfer list{"/d", {"a b", "", "\xFF"}};
    EXPECT_EQ(transfer_pack(of(list, true), kTypeGnomeFiles),
              "cut\nfile:///d/a%20b\nfile:///d/%FF");
    EXPECT_EQ(transfer_pack(of(list, false), kTypeMateFiles),
              "copy\nfile:///d/a%20b\nfile:///d/%FF");
    EXPECT_EQ(transfer_pack(of(list, false), kTypeUriList), "file:///d/a%20b\r\nfile:///d/%FF\r\n");
    EXPECT_EQ(
        transfer_pack(of(list, true), kTypeKdeCut) + transfer_pack(of(list, false), kTypeKdeCut),
        "1");
    EXPECT_EQ(transfer_pack(of(list, false), kTypeText), "/d/a b\n/d/\xFF");
    EXPECT_EQ(transfer_pack(of({"/d", {"x"}}, true), kTypeTransfiles),
              std::string("mvfiles\0\x0F\0\0\0\x01\0\0\0\x02\0\0\0/d\x01\0\0\0x", 27));
    for (const char* type :
         {kTypeTransfiles, kTypeGnomeFiles, kTypeUriList, kTypeKdeCut, kTypeText})
        EXPECT_EQ(transfer_pack(of({"/d", {"", ""}}, true), type), "") << type;
}

TEST(Transfer, ListsOfSeveralDirectoriesLeaveOutTheFormThatHoldsOne) {
    TransferLists two{true, {{"/a", {"x"}}, {"/b", {"y", "z"}}}, 0, {}};
    EXPECT_FALSE(transfer_packs(two, kTypeTransfiles));
    EXPECT_EQ(transfer_pack(two, kTypeGnomeFiles), "cut\nfile:///a/x\nfile:///b/y\nfile:///b/z");
    two.lists[0].names[0].clear();
    EXPECT_EQ(told(transfer_unpack(transfer_pack(two, kTypeTransfiles), kTypeTransfiles)),
              "cut /b:<y><z>");
}

TEST(Transfer, ListsOfOtherProgramsAreReadInAllTheirSpellings) {
    char host[256] = "";
    gethostname(host, sizeof host - 1);
    const struct {
        const char* type;
        std::string bytes;
        std::string kde;
        std::string expected;
    } rows[] = {
        {kTypeGnomeFiles, "cut\nfile:///a/x\nfile:///a/y", "", "cut /a:<x><y>"},
        {kTypeGnomeFiles, "copy\nfile:///a/x\n", "", "copy /a:<x>"},
        {kTypeGnomeFiles, std::string("copy\r\nfile:///a/x\r\n\0", 20), "", "copy /a:<x>"},
        {kTypeGnomeFiles, "move\nfile:///a/x", "", "nothing"},
        {kTypeGnomeFiles, "cut", "", "nothing"},
        {kTypeMateFiles, "cut\nfile:///%ff", "", "cut /:<\xFF>"},
        {kTypeUriList, "file:///a/x\r\n", "1", "cut /a:<x>"},
        {kTypeUriList, "file:///a/x\r\n", "0", "copy /a:<x>"},
        {kTypeUriList, std::string("file:///a/x\0", 12), "", "copy /a:<x>"},
        {kTypeUriList, "# said\nfile:///a/x\n\n#\nfile:///b/y\nfile:///a/z/", "",
         "copy /a:<x><z> /b:<y>"},
        {kTypeUriList, "FILE:/a/x\nfile://localhost/a/y\nfile://" + std::string(host) + "/a/z", "",
         "copy /a:<x><y><z>"},
        {kTypeUriList, "file:///a//b///x%20%25", "", "copy /a/b:<x %>"},
        {kTypeUriList, "sftp://h/x\nfile:///a/x\ntrash:///y", "", "copy /a:<x> left out 2"},
        {kTypeUriList, "file://elsewhere.invalid/a/x\nfile:relative\nfile://", "",
         "copy left out 3"},
        {kTypeUriList, "file:///\nfile:///a/..\nfile:///a/.\n/a/x", "", "copy left out 4"},
        {kTypeUriList, "file:///a/%\nfile:///a/%4\nfile:///%zz\nfile:///a%00\nfile:///a%2Fb", "",
         "copy left out 5"},
        {kTypeUriList, "", "1", "nothing"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(told(transfer_unpack(row.bytes, row.type, row.kde)), row.expected) << row.bytes;
    const std::string endless(std::size_t{1} << 20, 'x');
    EXPECT_EQ(transfer_unpack(endless, kTypeUriList).left_out[0].size(), kLeftOutBytes);
}

TEST(Transfer, AListWithADamagedByteIsNoListOrOneOfBaseNames) {
    const std::string whole =
        transfer_pack(of({"/dir", {"one", "", "two"}}, false), kTypeTransfiles);
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_EQ(told(transfer_unpack(whole.substr(0, size), kTypeTransfiles)), "nothing") << size;
    EXPECT_EQ(told(transfer_unpack(whole + '\0', kTypeTransfiles)), "nothing");
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const int byte : {0x00, 0x01, 0x2F, 0x2E, 0x7F, 0xFF}) {
            std::string damaged = whole;
            damaged[at] = static_cast<char>(byte);
            for (const FileTransfer& list : transfer_unpack(damaged, kTypeTransfiles).lists) {
                EXPECT_EQ(list.directory[0], '/');
                for (const std::string& name : list.names)
                    EXPECT_EQ(name.find_first_of(std::string("/\0", 2)), name.npos) << name;
            }
        }
    }
}

}  // namespace
